#include "ui/tray_menu.h"

#include <ranges>
#include <string_view>
#include <vector>

#include "pin/window_query.h"
#include "ui/active_window.h"
#include "ui/menu_build.h"
#include "ui/menu_rows.h"
#include "ui/raise.h"

namespace morvane {
namespace {

// The system's window class of open menus.
constexpr std::wstring_view MenuWindowClass = L"#32768";

bool isMenuOpen = false;

// The cursor's position, or the screen's corner when it cannot be read.
POINT MenuPoint() {
    POINT point{};
    return GetCursorPos(&point) != FALSE ? point : POINT{};
}

BOOL CALLBACK CollectMenuWindow(HWND window, LPARAM parameter) {
    if (IsWindowVisible(window) != FALSE && ReadClassName(window).View() == MenuWindowClass) {
        reinterpret_cast<std::vector<HWND>*>(parameter)->push_back(window);
    }
    return TRUE;
}

void TrackMenu(HWND controlWindow, const Menu& menu) {
    const POINT point = MenuPoint();
    // Documented for menus of notification icons: unless its window is in the foreground the menu
    // does not close on a click elsewhere, and without the empty message the next menu may vanish.
    SetForegroundWindow(controlWindow);
    TrackPopupMenu(menu.get(), TPM_RIGHTBUTTON | TPM_BOTTOMALIGN, point.x, point.y, 0,
                   controlWindow, nullptr);
    PostMessageW(controlWindow, WM_NULL, 0, 0);
}

}  // namespace

void ShowTrayMenu(HWND controlWindow) {
    // The icon can be clicked while the menu is open. A second menu would clear the records that
    // the rows of the first are drawn from.
    if (isMenuOpen) {
        return;
    }
    ClearMenuRows();
    PrepareMenuState();
    if (const Menu menu = BuildTrayMenu()) {
        isMenuOpen = true;
        TrackMenu(controlWindow, menu);
        isMenuOpen = false;
    }
    ClearMenuRows();
}

void RaiseOpenMenu() {
    std::vector<HWND> menuWindows;
    EnumThreadWindows(GetCurrentThreadId(), CollectMenuWindow,
                      reinterpret_cast<LPARAM>(&menuWindows));
    // Enumerated from the top down; raised from the bottom up, so submenus stay above their menus.
    for (const HWND window : std::ranges::reverse_view(menuWindows)) {
        RaiseOwnWindow(window);
    }
}

}  // namespace morvane
