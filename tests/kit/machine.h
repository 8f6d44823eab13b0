#pragma once

#include <string>
#include <vector>

#include "kit/level.h"

namespace morvane::kit {

// True in Windows Sandbox, which is thrown away when its window is closed.
[[nodiscard]] bool IsDisposable();

// This program's own.
[[nodiscard]] std::wstring ProgramFile();

struct Fact {
    std::string name;
    std::string value;
};

// What a reader of the report must know about the machine and the program.
[[nodiscard]] std::vector<Fact> Facts(const Kit& kit);

}  // namespace morvane::kit
