#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "base/win.h"
#include "support/wait.h"

// The notification area, read from the taskbar's tooltip windows in the shell's process. This is
// the taskbar that Wine 8 shows on its virtual desktop; without one, nothing is ever found. Wine
// keeps one tool per icon there, with the icon's rectangle and tip.
//
// An icon whose owner died without removing it stays forever (Program::Kill removes it). A balloon
// appears about two seconds after the request and stays for at least ten seconds. Its title and
// kind cannot be read here: use tray_recorder.h.
namespace morvane::test {

// True once the taskbar exists. The shell starts with the first program that needs a desktop, but
// that program does not wait for it: an icon added in the first second of a session is refused.
[[nodiscard]] bool WaitForTaskbar(std::chrono::milliseconds timeout = DefaultTimeout);

struct TrayIcon {
    RECT rect{};       // screen pixels
    std::wstring tip;  // at most 127 units
};

// Icons with a tip, in no particular order.
[[nodiscard]] std::vector<TrayIcon> TrayIcons();

// In a private session the only icon is the one of the program under test.
[[nodiscard]] bool TrayIconPresent();
[[nodiscard]] std::optional<POINT> TrayIconCentre();
[[nodiscard]] std::optional<std::wstring> TrayIconTip();

struct Balloon {
    RECT rect{};  // screen pixels, without the shadow
    std::wstring text;
};

// The balloon currently on the screen.
[[nodiscard]] std::optional<Balloon> ShownBalloon();

}  // namespace morvane::test
