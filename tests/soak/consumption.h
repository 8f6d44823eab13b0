#pragma once

// What the program holds of what runs out, looked at from outside.

#include <cstddef>
#include <string>

#include "base/win.h"

namespace morvane::test {

struct Consumption {
    std::size_t kernelHandles = 0;
    std::size_t privateKilobytes = 0;
    std::size_t menuRoom = 0;  // menus that could still be made, in the whole session
};

// All throw std::runtime_error where nothing can be measured: nothing would look like no growth.

// Takes a second or two, in which nobody else can make a menu.
[[nodiscard]] Consumption MeasureConsumption(DWORD processId);

// Both are quick.
[[nodiscard]] std::size_t KernelHandles(DWORD processId);
[[nodiscard]] std::size_t PrivateKilobytes(DWORD processId);

// Empty, or what has grown beyond what comes and goes.
[[nodiscard]] std::string Growth(const Consumption& before, const Consumption& after);

}  // namespace morvane::test
