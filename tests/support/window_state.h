#pragma once

#include <string>
#include <vector>

#include "base/win.h"

// Looks at windows of any process, by other calls than those the program itself decides with.
namespace morvane::test {

[[nodiscard]] bool IsTopmost(HWND window);

// Both are top-level windows and upper is met before lower in the order of EnumWindows. Activating
// a window, by click or by call, changes that order under Wine only where windows overlap.
[[nodiscard]] bool IsAbove(HWND upper, HWND lower);

// All top-level windows, highest first.
[[nodiscard]] std::vector<HWND> TopLevelWindows();

// Visible top-level windows of the class, highest first; "#32768" finds open menus.
[[nodiscard]] std::vector<HWND> VisibleWindowsOfClass(const std::wstring& className);

// Outer rectangle in screen pixels; all zero for a window that is gone.
[[nodiscard]] RECT WindowRect(HWND window);
[[nodiscard]] SIZE WindowSize(HWND window);

// The whole title, whatever its length; empty for a window that is gone.
[[nodiscard]] std::wstring WindowTitle(HWND window);
[[nodiscard]] std::wstring WindowClass(HWND window);
[[nodiscard]] DWORD ProcessOf(HWND window);

// Whether one of the window's properties is the atom of that theme name, as the theme library
// keeps it.
[[nodiscard]] bool HasThemeName(HWND window, const wchar_t* name);

}  // namespace morvane::test
