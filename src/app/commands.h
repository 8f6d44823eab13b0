#pragma once

// The commands that come back from the menu, by their identifiers.

#include "base/win.h"

namespace morvane {

// Carries out one command; unknown identifiers are ignored.
void RunCommand(HWND controlWindow, UINT command);

// Binds the engine and runs a pass. True when a window was asked to be topmost.
bool RunPass();

}  // namespace morvane
