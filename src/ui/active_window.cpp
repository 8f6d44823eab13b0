#include "ui/active_window.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

#include "base/process.h"
#include "base/rect.h"
#include "pin/candidates.h"
#include "pin/settings_sync.h"
#include "pin/window_query.h"
#include "shell/engine_binding.h"

namespace morvane {
namespace {

// On Windows a click on the icon gives the foreground to the task bar, or to the flyout that holds
// the hidden icons, before the icon's message arrives. Nobody means these by "the active window".
constexpr std::wstring_view TrayClasses[] = {
    L"Shell_TrayWnd",
    L"Shell_SecondaryTrayWnd",
    L"NotifyIconOverflowWindow",
    L"TopLevelWindowForOverflowXamlIsland",
};

HWND lastUsableForeground = nullptr;
HWND activeWindow = nullptr;

bool IsUsableClass(std::wstring_view className) {
    return className != ControlWindowClass &&
           std::ranges::find(TrayClasses, className) == std::end(TrayClasses);
}

}  // namespace

bool IsUsableActiveWindow(HWND window) {
    if (IsWindowVisible(window) == FALSE || !IsUsableClass(ReadClassName(window).View()) ||
        window == Process().controlWindow || IsWindow(window) == FALSE ||
        IsIconic(window) != FALSE) {
        return false;
    }
    const std::optional<RECT> frame = ReadFrame(window);
    return frame && Width(*frame) >= 1 && Height(*frame) >= 1;
}

void NoteForegroundWindow() {
    const HWND foreground = GetForegroundWindow();
    if (IsUsableActiveWindow(foreground)) {
        lastUsableForeground = foreground;
    }
}

HWND ActiveWindow() {
    return activeWindow;
}

void PrepareMenuState() {
    RefreshEngineBinding();
    ReloadSettings();
    RebuildCandidates();
    NoteForegroundWindow();
    // Either the foreground window, noted just now, or the last usable one before it.
    activeWindow = lastUsableForeground;
}

}  // namespace morvane
