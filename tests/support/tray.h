#pragma once

#include <chrono>
#include <optional>

#include "base/win.h"
#include "support/wait.h"

// The notification area, as the shell itself answers for it, and as it is on the screen.
//
// An icon whose owner died without removing it may stay (Program::Kill removes it). What the shell
// is told, tips and balloons included, is seen by tray_recorder.h.
namespace morvane::test {

// True once the taskbar exists. The shell starts with the first program that needs a desktop, but
// that program does not wait for it: an icon added in the first second of a session is refused.
[[nodiscard]] bool WaitForTaskbar(std::chrono::milliseconds timeout = DefaultTimeout);

// True while the shell holds this window's icon, whose number is 1.
[[nodiscard]] bool TrayIconPresent(HWND owner);

// Takes it away, as its owner would.
void RemoveTrayIconOf(HWND owner);

// Where that icon is on the screen, in pixels; nothing while it is not shown. Where the shell does
// not tell, the icon is searched for by its picture, which nothing may cover: the one that the
// owner's program contains, or else the system's.
[[nodiscard]] std::optional<RECT> TrayIconRect(HWND owner);

// Waits until it is shown and returns its centre; throws std::runtime_error if that does not
// happen.
[[nodiscard]] POINT WaitForTrayIcon(HWND owner);

}  // namespace morvane::test
