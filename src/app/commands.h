#pragma once

// The commands that come back from the menu, by their identifiers.

#include "base/win.h"

namespace morvane {

constexpr UINT CmdApplyNow = 1001;
constexpr UINT CmdAlwaysOnTop = 1002;
constexpr UINT CmdOpenSettings = 1003;
constexpr UINT CmdExit = 1004;
constexpr UINT CmdMinSizeActive = 1006;
constexpr UINT CmdStartWithWindows = 1010;
constexpr UINT CmdTogglePinBase = 2500;  // + row of the candidate list
constexpr UINT CmdMinSizeBase = 3000;    // + row of the candidate list
constexpr UINT LastMenuRow = 499;

// Carries out one command; unknown identifiers are ignored.
void RunCommand(HWND controlWindow, UINT command);

}  // namespace morvane
