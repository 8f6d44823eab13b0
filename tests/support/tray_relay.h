#pragma once

#include "base/win_shell.h"

// How a call of Shell_NotifyIconW travels to the recorder (tray_recorder.h), from any process.
namespace morvane::test {

// Holds the handle of the recorder's window, in decimal, while a recorder lives.
inline constexpr const wchar_t* TrayRecorderVariable = L"MORVANE_TRAY_RECORDER";

// The content of a WM_COPYDATA message; the answer to it is the result of the call.
struct RelayedTrayCall {
    DWORD message = 0;
    NOTIFYICONDATAW data{};
};

[[nodiscard]] bool IsTrayRecorded();

// Replaces Shell_NotifyIconW: tells the recorder instead of the shell. Allocates nothing, as a
// caller may be counting allocations.
BOOL WINAPI RelayTrayCall(DWORD message, PNOTIFYICONDATAW data);

}  // namespace morvane::test
