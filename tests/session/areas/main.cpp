// Waits for something to appear on the screen and tells a shell script where it is.
//
//   screen_areas icon          the icon in the notification area
//   screen_areas menus COUNT   that many open menus, from left to right
//   screen_areas about         the About window, once it is laid out
//   screen_areas balloon       the balloon of the notification area
//   screen_areas taskbar       nothing, once there is a taskbar for icons
//   screen_areas no-about      nothing, once the About window is gone
//   screen_areas no-tips       nothing, once no tool tip is shown
//
// Each area is a line "X Y WIDTH HEIGHT" in screen pixels. The exit status is 0 on success, 1 after
// ten seconds without it, 2 for wrong arguments.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cwchar>
#include <optional>
#include <string_view>
#include <vector>

#include "base/win.h"
#include "support/tray.h"
#include "support/wait.h"
#include "support/window_state.h"

#include <commctrl.h>
#include <fcntl.h>
#include <io.h>

namespace morvane::areas {

namespace {

using Areas = std::vector<RECT>;

enum ExitStatus : int { Done = 0, NotDone = 1, WrongArguments = 2 };

Areas IconAreas() {
    HWND const control = FindWindowExW(HWND_MESSAGE, nullptr, L"MorvaneHiddenWindow", nullptr);
    const std::optional<RECT> icon = test::TrayIconRect(control);
    return icon ? Areas{*icon} : Areas{};
}

Areas MenuAreas() {
    Areas areas;
    for (const HWND menu : test::VisibleWindowsOfClass(L"#32768")) {
        areas.push_back(test::WindowRect(menu));
    }
    std::sort(areas.begin(), areas.end(),
              [](const RECT& one, const RECT& other) { return one.left < other.left; });
    return areas;
}

Areas AboutAreas() {
    Areas areas;
    for (const HWND dialog : test::VisibleWindowsOfClass(L"MorvaneAboutDialog")) {
        // The owner is disabled only after the dialog is laid out and placed.
        if (IsWindowEnabled(GetWindow(dialog, GW_OWNER)) == FALSE) {
            areas.push_back(test::WindowRect(dialog));
        }
    }
    return areas;
}

bool IsTip(HWND tooltip) {
    return (GetWindowLongPtrW(tooltip, GWL_STYLE) & TTS_BALLOON) == 0;
}

Areas BalloonAreas() {
    Areas areas;
    for (const HWND tooltip : test::VisibleWindowsOfClass(TOOLTIPS_CLASSW)) {
        if (!IsTip(tooltip)) {
            areas.push_back(test::WindowRect(tooltip));
        }
    }
    return areas;
}

bool NoTips() {
    const std::vector<HWND> tooltips = test::VisibleWindowsOfClass(TOOLTIPS_CLASSW);
    return std::none_of(tooltips.begin(), tooltips.end(), IsTip);
}

bool NoAbout() {
    return test::VisibleWindowsOfClass(L"MorvaneAboutDialog").empty();
}

// An empty area belongs to a window still being created.
bool AreComplete(const Areas& areas, std::size_t count) {
    return areas.size() == count && std::none_of(areas.begin(), areas.end(), [](const RECT& area) {
               return IsRectEmpty(&area) != FALSE;
           });
}

int Print(Areas (*find)(), std::size_t count) {
    Areas areas;
    const bool came = test::WaitUntil([&] {
        areas = find();
        return AreComplete(areas, count);
    });
    for (const RECT& area : areas) {
        std::printf("%ld %ld %ld %ld\n", area.left, area.top, area.right - area.left,
                    area.bottom - area.top);
    }
    return came ? Done : NotDone;
}

int WaitFor(bool (*condition)()) {
    return test::WaitUntil(condition) ? Done : NotDone;
}

int Run(std::wstring_view what) {
    if (what == L"icon") {
        return Print(IconAreas, 1);
    }
    if (what == L"about") {
        return Print(AboutAreas, 1);
    }
    if (what == L"balloon") {
        return Print(BalloonAreas, 1);
    }
    if (what == L"taskbar") {
        return test::WaitForTaskbar() ? Done : NotDone;
    }
    if (what == L"no-about") {
        return WaitFor(NoAbout);
    }
    if (what == L"no-tips") {
        return WaitFor(NoTips);
    }
    return WrongArguments;
}

}  // namespace

}  // namespace morvane::areas

// Called by the C runtime's start-up; no header declares it.
int wmain(int count, wchar_t** values);

int wmain(int count, wchar_t** values) {
    using namespace morvane::areas;
    // Plain LF, as the calling script expects.
    static_cast<void>(_setmode(_fileno(stdout), _O_BINARY));
    if (count == 3 && std::wstring_view(values[1]) == L"menus") {
        return Print(MenuAreas, std::wcstoul(values[2], nullptr, 10));
    }
    return count == 2 ? Run(values[1]) : WrongArguments;
}
