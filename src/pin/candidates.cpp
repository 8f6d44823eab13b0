#include "pin/candidates.h"

#include <algorithm>
#include <optional>

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

// By class alone: the handle adds nothing, since the control window is message-only and is not met
// among the top-level windows.
bool IsOfControlWindowClass(HWND window) {
    return ReadClassName(window).View() == ControlWindowClass;
}

}  // namespace

const std::vector<CandidateWindow>& CandidateList() {
    return menuState.candidates;
}

void RebuildCandidates() {
    std::vector<CandidateWindow>& candidates = menuState.candidates;
    candidates.clear();
    ForEachTopLevelWindow([&](HWND window) {
        if (IsWindowVisible(window) == FALSE || HasOwner(window) ||
            IsOfControlWindowClass(window)) {
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
    if (IsWindowVisible(window) == FALSE || IsOfControlWindowClass(window) ||
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
