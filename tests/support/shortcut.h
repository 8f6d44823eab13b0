#pragma once

#include <optional>
#include <string>

#include "base/win.h"

namespace morvane::test {

// A shell link, read through the shell.
struct Shortcut {
    std::wstring target;
    std::wstring description;
    std::wstring arguments;
    std::wstring workingFolder;
    std::wstring iconPath;
    int iconIndex = -1;
    int showCommand = -1;
    WORD hotKey = 0xFFFF;
};

// Nothing if the path is not a readable shortcut.
[[nodiscard]] std::optional<Shortcut> ReadShortcut(const std::wstring& path);

}  // namespace morvane::test
