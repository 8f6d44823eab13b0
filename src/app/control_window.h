#pragma once

// The hidden control window: the hub through which everything after start-up happens.

#include "base/win.h"

namespace morvane {

// False when the class could not be registered.
[[nodiscard]] bool RegisterControlWindowClass(HINSTANCE instance);

// A message-only window, set up completely when this returns: settings loaded, timer running, icon
// shown, first pass done. Null on failure.
[[nodiscard]] HWND CreateControlWindow(HINSTANCE instance);

}  // namespace morvane
