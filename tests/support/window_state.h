#pragma once

#include <string>
#include <vector>

#include "base/win.h"

// Inspects windows of any process, using other calls than the program itself relies on.
namespace morvane::test {

[[nodiscard]] bool IsTopmost(HWND window);

// True if both are top-level windows and EnumWindows reports upper first. Under Wine 8.0,
// activating a window, by click or by call, changes that order only where windows overlap.
[[nodiscard]] bool IsAbove(HWND upper, HWND lower);

// All top-level windows, highest first.
[[nodiscard]] std::vector<HWND> TopLevelWindows();

// Visible top-level windows of the class, highest first; "#32768" finds open menus.
[[nodiscard]] std::vector<HWND> VisibleWindowsOfClass(const std::wstring& className);

// Outer rectangle in screen pixels; all zero if the window is gone.
[[nodiscard]] RECT WindowRect(HWND window);
[[nodiscard]] SIZE WindowSize(HWND window);

// The whole title, whatever its length; empty if the window is gone.
[[nodiscard]] std::wstring WindowTitle(HWND window);
[[nodiscard]] std::wstring WindowClass(HWND window);
[[nodiscard]] DWORD ProcessOf(HWND window);

}  // namespace morvane::test
