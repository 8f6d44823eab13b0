#pragma once

// The windows to see on the desktop: visible, unowned, titled top-level windows.

#include <string>
#include <string_view>
#include <vector>

#include "base/win.h"

namespace morvane::report {

struct ShownWindow {
    HWND window = nullptr;
    std::wstring title;
    bool topmost = false;
    bool active = false;  // the foreground window
};

// From the top of the Z-order down.
[[nodiscard]] std::vector<ShownWindow> ShownWindows();

// The highest window whose title contains the text, case-sensitively; null if there is none.
[[nodiscard]] const ShownWindow* FindShown(const std::vector<ShownWindow>& windows,
                                           std::wstring_view text);

}  // namespace morvane::report
