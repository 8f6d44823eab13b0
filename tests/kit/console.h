#pragma once

#include <string>

#include "base/owners.h"
#include "base/win.h"

namespace morvane::kit {

// A line for good, and one about the running test that the next line replaces.
void Say(const std::string& line);
void SayForNow(const std::string& line);

// The mode that the console's input had before.
struct InputModeTraits {
    using Handle = DWORD;
    static Handle Empty() noexcept { return 0; }
    static void Close(Handle mode) noexcept;
};
using InputMode = Owner<InputModeTraits>;

// Keeps the clicks of tests from selecting text, which would stop the run, and their keys from
// reaching what reads the console afterwards.
[[nodiscard]] InputMode IgnoreInput();

// A window that was opened for this program alone would be gone before anybody could read it.
void WaitForEnter();

}  // namespace morvane::kit
