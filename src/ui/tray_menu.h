#pragma once

// The tray menu, from opening to dismissal.

#include "base/win.h"

namespace morvane {

// Builds the menu and shows it at the cursor; returns when the user has chosen or dismissed it.
// The choice arrives at the control window as a command. Does nothing while a menu is open.
void ShowTrayMenu(HWND controlWindow);

// Puts the windows of every open menu of this thread above all others again. A pass raises pinned
// windows above everything, and a menu under one of them could not be used. Does nothing without an
// open menu.
void RaiseOpenMenu();

}  // namespace morvane
