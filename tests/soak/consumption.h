#pragma once

// The program's use of limited resources, measured from outside.

#include <cstddef>
#include <string>

#include "base/win.h"

namespace morvane::test {

struct Consumption {
    std::size_t kernelHandles = 0;
    std::size_t privateKilobytes = 0;
    std::size_t menuRoom = 0;  // menus that can still be created in the session
};

// All throw std::runtime_error if they cannot measure: a missing figure would pass for no growth.

// Takes a second or two, during which no other process can create a menu.
[[nodiscard]] Consumption MeasureConsumption(DWORD processId);

[[nodiscard]] std::size_t KernelHandles(DWORD processId);
[[nodiscard]] std::size_t PrivateKilobytes(DWORD processId);

// What has grown beyond the usual variation; empty if nothing has.
[[nodiscard]] std::string Growth(const Consumption& before, const Consumption& after);

}  // namespace morvane::test
