#include "app/control_window.h"

#include "app/commands.h"
#include "app/process.h"
#include "i18n/strings.h"
#include "pin/candidates.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "pin/engine_binding.h"
#include "pin/settings_sync.h"
#include "res/resource_ids.h"
#include "shell/settings_editor.h"
#include "ui/tray_icon.h"

namespace morvane {

namespace {

constexpr UINT_PTR PassTimer = 1;
constexpr UINT_PTR SpareTimer = 2;
constexpr UINT PassPeriod = 500;  // milliseconds

void RunPass() {
    RefreshEngineBinding();
    ApplyAll();
}

// The process-wide window handle is still null here, because CreateWindowExW has not returned:
// these bindings carry no own window, and the first tick puts that right. Kept in this order.
LRESULT OnCreate(HWND window) {
    Engine().ownClassName = ControlWindowClass;
    RefreshEngineBinding();
    // Without a file the default list serves.
    static_cast<void>(EnsureSettingsFile());
    // Bound again, because making sure of the file may have taken a while.
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
    // Nothing starts this one; the stop is kept.
    KillTimer(window, SpareTimer);
    ReleaseAll();
    RemoveTrayIcon();
    PostQuitMessage(0);
    return 0;
}

LRESULT OnTimer(UINT_PTR timer) {
    if (timer == PassTimer) {
        NoteForegroundWindow();
        RunPass();
    }
    return 0;
}

LRESULT OnCommand(HWND window, WPARAM wParam) {
    RunCommand(window, LOWORD(wParam));
    return 0;
}

// Nothing listens for a new task bar, for changed settings or for the end of the session: a
// message-only window receives no broadcasts. An icon that is lost with its task bar stays lost.
LRESULT CALLBACK ControlWindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            return OnCreate(window);
        case WM_DESTROY:
            return OnDestroy(window);
        case WM_TIMER:
            return OnTimer(wParam);
        case WM_COMMAND:
            return OnCommand(window, wParam);
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
