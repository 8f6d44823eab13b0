#include "app/control_window.h"

#include "app/commands.h"
#include "base/process.h"
#include "i18n/strings.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "pin/settings_sync.h"
#include "res/resource_ids.h"
#include "shell/engine_binding.h"
#include "shell/settings_editor.h"
#include "ui/about.h"
#include "ui/active_window.h"
#include "ui/menu_rows.h"
#include "ui/tray_icon.h"
#include "ui/tray_menu.h"

namespace morvane {
namespace {

constexpr UINT_PTR PassTimer = 1;
constexpr UINT_PTR SpareTimer = 2;
constexpr UINT_PTR MenuTimer = 3;
constexpr UINT PassPeriod = 500;  // milliseconds

// CreateWindowExW has not returned, so the process-wide window handle is still null and these
// bindings carry no own window. The first tick binds again.
LRESULT OnCreate(HWND window) {
    Engine().ownClassName = ControlWindowClass;
    RefreshEngineBinding();
    EnsureSettingsFile();
    // Writing the file to a redirected folder can take a while: bind to the path as it is now.
    RefreshEngineBinding();
    ReloadSettings();
    // Without a timer the program still enforces on every command.
    SetTimer(window, PassTimer, PassPeriod, nullptr);
    AddTrayIcon(window, Process().instance);
    NoteForegroundWindow();
    RunPass();
    return 0;
}

LRESULT OnDestroy(HWND window) {
    KillTimer(window, PassTimer);
    // Reserved: nothing starts it, and stopping it is harmless.
    KillTimer(window, SpareTimer);
    ReleaseAll();
    RemoveTrayIcon();
    PostQuitMessage(0);
    return 0;
}

// Nothing in the program starts this timer. A posted WM_TIMER opens the menu without the mouse.
void OpenMenuInScreenCentre(HWND window) {
    KillTimer(window, MenuTimer);
    SetCursorPos(GetSystemMetrics(SM_CXSCREEN) / 2, GetSystemMetrics(SM_CYSCREEN) / 2);
    ShowTrayMenu(window);
}

LRESULT OnTimer(HWND window, UINT_PTR timer) {
    if (timer == PassTimer) {
        NoteForegroundWindow();
        // What the user is looking at must not disappear under the windows just raised.
        if (RunPass()) {
            RaiseAboutDialog();
            RaiseOpenMenu();
        }
    } else if (timer == MenuTimer) {
        OpenMenuInScreenCentre(window);
    }
    return 0;
}

// Both buttons open the same menu, on release, so that a press can still be dragged off the icon.
LRESULT OnTrayIcon(HWND window, LPARAM mouseMessage) {
    if (mouseMessage == WM_LBUTTONUP || mouseMessage == WM_RBUTTONUP) {
        ShowTrayMenu(window);
    }
    return 0;
}

LRESULT OnMeasureItem(HWND window, WPARAM wParam, LPARAM lParam) {
    auto* const measure = reinterpret_cast<MEASUREITEMSTRUCT*>(lParam);
    return measure != nullptr && MeasurePinItem(window, *measure)
               ? TRUE
               : DefWindowProcW(window, WM_MEASUREITEM, wParam, lParam);
}

LRESULT OnDrawItem(HWND window, WPARAM wParam, LPARAM lParam) {
    const auto* const draw = reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
    return draw != nullptr && DrawPinItem(*draw)
               ? TRUE
               : DefWindowProcW(window, WM_DRAWITEM, wParam, lParam);
}

LRESULT OnCommand(HWND window, WPARAM wParam) {
    RunCommand(window, LOWORD(wParam));
    return 0;
}

// Nothing listens for a new task bar, for changed settings or for the end of the session: Windows
// sends none of these to a message-only window. An icon that is lost with its task bar stays lost.
LRESULT CALLBACK ControlWindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            return OnCreate(window);
        case WM_DESTROY:
            return OnDestroy(window);
        case WM_TIMER:
            return OnTimer(window, wParam);
        case WM_COMMAND:
            return OnCommand(window, wParam);
        case WM_TRAYICON:
            return OnTrayIcon(window, lParam);
        case WM_MEASUREITEM:
            return OnMeasureItem(window, wParam, lParam);
        case WM_DRAWITEM:
            return OnDrawItem(window, wParam, lParam);
        default:
            return DefWindowProcW(window, message, wParam, lParam);
    }
}

}  // namespace

bool RegisterControlWindowClass(HINSTANCE instance) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = ControlWindowProcedure;
    windowClass.hInstance = instance;
    windowClass.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(IDI_MORVANE));
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.lpszClassName = ControlWindowClass;
    return RegisterClassW(&windowClass) != 0;
}

HWND CreateControlWindow(HINSTANCE instance) {
    return CreateWindowExW(0, ControlWindowClass, GetText(StrAppName), 0, 0, 0, 0, 0, HWND_MESSAGE,
                           nullptr, instance, nullptr);
}

}  // namespace morvane
