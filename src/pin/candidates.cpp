#include "pin/candidates.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "app/process.h"
#include "pin/engine.h"
#include "pin/engine_binding.h"
#include "pin/settings_sync.h"
#include "pin/window_query.h"

namespace morvane {

namespace {

struct MenuState {
    std::vector<CandidateWindow> candidates;
    HWND lastUsableForeground = nullptr;
    HWND activeWindow = nullptr;
};

MenuState menuState;

// On Windows a click on the icon gives the foreground to the task bar, or to the flyout that holds
// the hidden icons, before the icon's message arrives. Nobody means these by "the active window".
constexpr std::array<std::wstring_view, 4> TrayClasses = {
    L"Shell_TrayWnd",
    L"Shell_SecondaryTrayWnd",
    L"NotifyIconOverflowWindow",
    L"TopLevelWindowForOverflowXamlIsland",
};

bool IsUsableClass(std::wstring_view className) {
    return className != ControlWindowClass &&
           std::find(TrayClasses.begin(), TrayClasses.end(), className) == TrayClasses.end();
}

}  // namespace

const std::vector<CandidateWindow>& CandidateList() {
    return menuState.candidates;
}

void RebuildCandidates() {
    std::vector<CandidateWindow>& candidates = menuState.candidates;
    candidates.clear();
    ForEachTopLevelWindow([&](HWND window) {
        // By class alone: the control window itself is message-only and never enumerated.
        if (IsWindowVisible(window) == FALSE || HasOwner(window) ||
            ReadClassName(window).View() == ControlWindowClass) {
            return;
        }
        const WindowTitle title = ReadTitle(window);
        if (title.length > 0) {
            candidates.push_back({window, std::wstring(title.View())});
        }
    });
    // By the numeric value of the units, without locale: the order is the same on every machine.
    std::sort(candidates.begin(), candidates.end(),
              [](const CandidateWindow& a, const CandidateWindow& b) { return a.title < b.title; });
}

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
        menuState.lastUsableForeground = foreground;
    }
}

HWND ActiveWindow() {
    return menuState.activeWindow;
}

void PrepareMenuState() {
    RefreshEngineBinding();
    ReloadSettings();
    RebuildCandidates();
    NoteForegroundWindow();
    // A usable foreground window has just been noted; without one the last that was noted serves.
    menuState.activeWindow = menuState.lastUsableForeground;
}

}  // namespace morvane
