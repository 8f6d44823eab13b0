#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "base/win.h"
#include "support/wait.h"

// The notification area of the session's own taskbar, read from the taskbar's tooltip windows in
// the shell's process. This is the taskbar that Wine 8 shows on its virtual desktop; without one,
// nothing is ever found. Wine keeps one tool per icon there, with the icon's rectangle and tip.
//
// An icon whose owner died without removing it stays for good (Program::Kill removes it). A
// balloon is shown about two seconds after it was asked for, and then for ten seconds at least.
// Its title and its kind cannot be read here: tray_recorder.h has them.
namespace morvane::test {

// The shell starts with the first program that needs a desktop and is not waited for by it: an icon
// added in the first second of a session is refused. True once the taskbar is there.
[[nodiscard]] bool WaitForTaskbar(std::chrono::milliseconds timeout = DefaultTimeout);

struct TrayIcon {
    RECT rect{};       // screen pixels
    std::wstring tip;  // at most 127 units
};

// Icons with a tip, in no particular order.
[[nodiscard]] std::vector<TrayIcon> TrayIcons();

// In a private session the only icon is that of the program under test.
[[nodiscard]] bool TrayIconPresent();
[[nodiscard]] std::optional<POINT> TrayIconCentre();
[[nodiscard]] std::optional<std::wstring> TrayIconTip();

struct Balloon {
    RECT rect{};  // screen pixels, without the shadow
    std::wstring text;
};

// The balloon that is on the screen now.
[[nodiscard]] std::optional<Balloon> ShownBalloon();

}  // namespace morvane::test
