#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kit/level.h"

namespace morvane::kit {

// True in Windows Sandbox, which is thrown away when its window is closed.
[[nodiscard]] bool IsDisposable();

[[nodiscard]] std::wstring UserName();
[[nodiscard]] std::wstring ComputerName();

struct Fact {
    std::string name;
    std::string value;
};

// What a reader of the report must know about the machine and the program.
[[nodiscard]] std::vector<Fact> Facts(const Kit& kit);

}  // namespace morvane::kit
