#pragma once

#include <string_view>

namespace morvane::test {

// The comment lines at the top of every settings file the program writes, up to the first line that
// varies. Repeated here so that a change to this user-visible text fails a test.
inline constexpr std::string_view SettingsHeader =
    "# Morvane config (UTF-8)\n"
    "# One entry per line: pattern [min_width min_height]\n"
    "# pattern = title substring (case-insensitive). 0 = no resize.\n"
    "# Example: Visual Studio Code\t1280\t720\n";

}  // namespace morvane::test
