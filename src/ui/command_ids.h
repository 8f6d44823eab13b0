#pragma once

// The identifiers that menu items carry and that come back as commands.

#include "base/win.h"

namespace morvane {

constexpr UINT CmdApplyNow = 1001;
constexpr UINT CmdAlwaysOnTop = 1002;
constexpr UINT CmdOpenSettings = 1003;
constexpr UINT CmdExit = 1004;
constexpr UINT CmdMinSizeActive = 1006;  // 1005 is not used
constexpr UINT CmdAbout = 1009;
constexpr UINT CmdStartWithWindows = 1010;
constexpr UINT CmdTogglePinBase = 2500;  // + row of the candidate list
constexpr UINT CmdMinSizeBase = 3000;    // + row of the candidate list

constexpr UINT MaxMenuWindows = 500;  // rows of the candidate list that a submenu considers

}  // namespace morvane
