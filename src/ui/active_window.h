#pragma once

// The window that the user worked with before going to the tray, and the other state that a menu
// is built from.

#include "base/win.h"

namespace morvane {

// Visible, not the control window, not part of the task bar, alive, not minimised, at least 1 x 1
// pixel.
[[nodiscard]] bool IsUsableActiveWindow(HWND window);

// Remembers the foreground window if it is usable; otherwise the one noted before stays.
void NoteForegroundWindow();

// The window chosen when the menu was last prepared; may be null, and may have died since.
[[nodiscard]] HWND ActiveWindow();

// Just before the menu is built: binds the engine, re-reads the settings, rebuilds the candidates
// and chooses the active window.
void PrepareMenuState();

}  // namespace morvane
