#pragma once

// What every dialog of the program needs around its content.

#include "base/win.h"

namespace morvane {

// Moves a window to the bottom-right corner of the work area, margin pixels from its edges,
// whatever side of the screen the task bar is on. Does nothing for a null window.
void PositionNearTray(HWND window, int margin);

// Runs a dialog until it is destroyed, with its owner disabled meanwhile. The loop dispatches every
// message of the thread. A quit message ends it and is not posted again.
void RunModal(HWND owner, HWND dialog);

}  // namespace morvane
