#include "ui/tray_menu.h"

#include <ranges>
#include <string_view>
#include <vector>

#include "pin/candidates.h"
#include "pin/window_query.h"
#include "ui/menu_build.h"
#include "ui/menu_rows.h"

namespace morvane {

namespace {

// The system's window class of open menus.
constexpr std::wstring_view MenuWindowClass = L"#32768";

bool isMenuOpen = false;

// The cursor's position, or the screen's corner when it cannot be read.
POINT MenuPoint() {
    POINT point{};
    if (GetCursorPos(&point) == FALSE) {
        return {};
    }
    return point;
}

BOOL CALLBACK CollectMenuWindow(HWND window, LPARAM parameter) {
    if (IsWindowVisible(window) != FALSE && ReadClassName(window).View() == MenuWindowClass) {
        reinterpret_cast<std::vector<HWND>*>(parameter)->push_back(window);
    }
    return TRUE;
}

void TrackMenu(HWND controlWindow, const Menu& menu) {
    const POINT point = MenuPoint();
    // A menu of a process that is not in the foreground would not close on a click elsewhere; the
    // empty message afterwards lets the switch back take effect at once. Both are documented for
    // menus of notification icons.
    SetForegroundWindow(controlWindow);
    TrackPopupMenu(menu.get(), TPM_RIGHTBUTTON | TPM_BOTTOMALIGN, point.x, point.y, 0,
                   controlWindow, nullptr);
    PostMessageW(controlWindow, WM_NULL, 0, 0);
}

}  // namespace

void ShowTrayMenu(HWND controlWindow) {
    // A click on the icon can arrive while the menu is open: a second one would take away the
    // records that the rows of the first are drawn from.
    if (isMenuOpen) {
        return;
    }
    ForgetRows();
    PrepareMenuState();
    if (const Menu menu = BuildTrayMenu()) {
        isMenuOpen = true;
        TrackMenu(controlWindow, menu);
        isMenuOpen = false;
    }
    ForgetRows();
}

void RaiseOpenMenu() {
    std::vector<HWND> menuWindows;
    EnumThreadWindows(GetCurrentThreadId(), CollectMenuWindow,
                      reinterpret_cast<LPARAM>(&menuWindows));
    // Enumerated from the top downwards: raised from the bottom up, submenus stay above their
    // menus.
    for (const HWND window : std::ranges::reverse_view(menuWindows)) {
        SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0,
                     SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE | SWP_NOOWNERZORDER);
    }
}

}  // namespace morvane
