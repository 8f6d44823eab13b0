#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/win.h"

// Inspects windows of any process, using other calls than the program itself relies on.
namespace morvane::test {

[[nodiscard]] bool IsTopmost(HWND window);

// True if both are top-level windows and EnumWindows reports upper first. Under Wine 8.0,
// activating a window, by click or by call, changes that order only where windows overlap.
[[nodiscard]] bool IsAbove(HWND upper, HWND lower);

// The given windows in Z-order, topmost first.
[[nodiscard]] std::vector<HWND> InDesktopOrder(const std::vector<HWND>& windows);

// After a pass that asked for it: whether the windows lie in this order on the desktop, topmost
// first. On a busy machine a window sometimes ends up above one that was raised after it, without
// any request. So up to two further passes may correct that; the output counts them.
[[nodiscard]] bool DesktopShows(const std::vector<HWND>& windows,
                                const std::function<void()>& furtherPass);

// All top-level windows, highest first.
[[nodiscard]] std::vector<HWND> TopLevelWindows();

// Visible top-level windows of the class, highest first, of one process or, if it is 0, of all;
// "#32768" finds open menus.
[[nodiscard]] std::vector<HWND> VisibleWindowsOfClass(const std::wstring& className,
                                                      DWORD process = 0);

// The highest of them, or null.
[[nodiscard]] HWND HighestWindowOfClass(const std::wstring& className, DWORD process);

// Outer rectangle in screen pixels; all zero if the window is gone.
[[nodiscard]] RECT WindowRect(HWND window);
[[nodiscard]] SIZE WindowSize(HWND window);

// The whole title, whatever its length; empty if the window is gone.
[[nodiscard]] std::wstring WindowTitle(HWND window);
[[nodiscard]] std::wstring WindowClass(HWND window);
// The part of a title that the program reads.
[[nodiscard]] std::wstring SeenTitle(const std::wstring& title);

// The titles in the program's window list, in row order: those of visible windows without an owner.
[[nodiscard]] std::vector<std::wstring> RowTitles();

[[nodiscard]] DWORD ProcessOf(HWND window);

}  // namespace morvane::test
