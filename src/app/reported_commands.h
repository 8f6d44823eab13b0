#pragma once

// The commands that tell the user how they went. All balloons come from here.

#include "base/win.h"

namespace morvane {

// Records the window's size as its minimum size.
void PinWindowAtCurrentSize(HWND window);

// Creates or removes the Startup shortcut.
void ToggleStartWithWindows();

}  // namespace morvane
