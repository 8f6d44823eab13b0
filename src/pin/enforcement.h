#pragma once

// Keeps the windows that the list identifies on top and at their minimum size, and releases them.

#include "base/win.h"

namespace morvane {

// One full pass: re-reads the settings file, then pins every matching window in the list's order,
// or releases them all when pinning is off. True when a window was asked to be topmost, so that it
// may now cover others. The engine must have been bound.
bool ApplyAll();

// Grows the window to its entry's minimum size and makes it topmost. With force false the topmost
// request is left out for a remembered window that is still topmost. True when it was sent.
bool ApplyToWindow(HWND window, bool force);

// Makes every remembered window an ordinary one again and forgets them all. Sizes stay.
void ReleaseAll();

// Forgets remembered windows that no longer qualify.
void PruneRemembered();

}  // namespace morvane
