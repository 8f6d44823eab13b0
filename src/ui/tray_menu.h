#pragma once

// The tray menu, from opening to dismissal.

#include "base/win.h"

namespace morvane {

// Builds the menu and shows it at the cursor; returns when the user has chosen or dismissed it.
// The choice arrives at the control window as a command. Does nothing while a menu is open.
void ShowTrayMenu(HWND controlWindow);

// Puts the open menus of this thread above the windows that a pass has raised. Does nothing when
// none is open.
void RaiseOpenMenu();

}  // namespace morvane
