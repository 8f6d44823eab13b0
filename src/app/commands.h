#pragma once

// The commands that come back from the menu, by their identifiers.

#include "base/win.h"

namespace morvane {

// Carries out one command; unknown identifiers are ignored.
void RunCommand(HWND controlWindow, UINT command);

}  // namespace morvane
