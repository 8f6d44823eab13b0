#pragma once

// The windows that the menu offers, and the window that was active when the menu was opened.

#include <string>
#include <vector>

#include "base/win.h"

namespace morvane {

struct CandidateWindow {
    HWND window = nullptr;
    std::wstring title;  // as read when the list was built
};

// Kept from one rebuild to the next: command numbers are positions in it.
[[nodiscard]] const std::vector<CandidateWindow>& CandidateList();

// Fills the list with the visible, unowned, titled windows that are not ours, by title.
void RebuildCandidates();

// Visible, not ours, not part of the task bar, alive, not minimised, at least 1 x 1 pixel.
[[nodiscard]] bool IsUsableActiveWindow(HWND window);

// Remembers the foreground window if it is usable; otherwise the one noted before stays.
void NoteForegroundWindow();

// The window chosen when the menu was last prepared; may be null, and may have died since.
[[nodiscard]] HWND ActiveWindow();

// Just before the menu is built: binds the engine, re-reads the settings, rebuilds the candidates
// and chooses the active window.
void PrepareMenuState();

}  // namespace morvane
