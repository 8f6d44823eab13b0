#pragma once

#include "base/win.h"

namespace morvane {

// Puts a window of ours above all others, without activating, moving or resizing it.
inline void RaiseOwnWindow(HWND window) {
    SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0,
                 SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE | SWP_NOOWNERZORDER);
}

}  // namespace morvane
