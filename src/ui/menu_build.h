#pragma once

// The tray menu's items, from the state that was prepared for it.

#include "base/gui_owners.h"
#include "base/win.h"

namespace morvane {

// The whole menu with its submenus; empty when it could not be created. A submenu that could not
// be created is left out.
[[nodiscard]] Menu BuildTrayMenu();

// The submenu of all candidate windows. Empty on failure.
[[nodiscard]] Menu BuildAddRemoveMenu();

// The submenu of the active window and the candidate windows that have a size. Empty on failure.
[[nodiscard]] Menu BuildMinSizeMenu();

}  // namespace morvane
