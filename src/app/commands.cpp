#include "app/commands.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <vector>

#include "i18n/strings.h"
#include "pin/candidates.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "pin/engine_binding.h"
#include "pin/pin_operations.h"
#include "shell/settings_editor.h"
#include "shell/startup_shortcut.h"
#include "ui/about.h"
#include "ui/command_ids.h"
#include "ui/tray_icon.h"

namespace morvane {

namespace {

void ApplyNow(HWND /*controlWindow*/) {
    RefreshEngineBinding();
    ApplyAll();
}

void ToggleAlwaysOnTop(HWND /*controlWindow*/) {
    RefreshEngineBinding();
    SetPinning(!Engine().pinList.pinning);
}

void OpenSettingsFile(HWND /*controlWindow*/) {
    OpenSettings();
}

void Exit(HWND controlWindow) {
    DestroyWindow(controlWindow);
}

void PinActiveWindowAtItsSize(HWND /*controlWindow*/) {
    PinWindowAtCurrentSize(ActiveWindow());
}

void ToggleStartWithWindows(HWND /*controlWindow*/) {
    if (IsStartupEnabled()) {
        RemoveStartupShortcut();
        // Announced also when the removal has failed: deliberate. The check mark of the next menu
        // shows what is true.
        ShowBalloon(GetText(StrAppName), GetText(StrStartupDisabled), BalloonInfo);
    } else if (InstallStartupShortcut()) {
        ShowBalloon(GetText(StrAppName), GetText(StrStartupEnabled), BalloonInfo);
    } else {
        ShowBalloon(GetText(StrAppName), GetText(StrStartupFailed), BalloonWarning);
    }
}

void ShowAbout(HWND controlWindow) {
    ShowAboutDialog(controlWindow);
}

struct Command {
    UINT id;
    void (*action)(HWND controlWindow);
};

constexpr Command Commands[] = {
    {CmdApplyNow, ApplyNow},
    {CmdAlwaysOnTop, ToggleAlwaysOnTop},
    {CmdOpenSettings, OpenSettingsFile},
    {CmdExit, Exit},
    {CmdMinSizeActive, PinActiveWindowAtItsSize},
    {CmdAbout, ShowAbout},
    {CmdStartWithWindows, ToggleStartWithWindows},
};

// The windows are enumerated again before the row is looked up; a "(min size)" command uses the
// list that its menu was built from. The difference is deliberate.
void ToggleRow(std::size_t row) {
    RebuildCandidates();
    const std::vector<CandidateWindow>& candidates = CandidateList();
    if (row < candidates.size()) {
        RefreshEngineBinding();
        // A copy: while the pass inside waits for another window, a message sent to the control
        // window can rebuild the list.
        const std::wstring title = candidates[row].title;
        ToggleWindow(title);
    }
}

void PinRowAtItsSize(std::size_t row) {
    const std::vector<CandidateWindow>& candidates = CandidateList();
    if (row < candidates.size()) {
        PinWindowAtCurrentSize(candidates[row].window);
    }
}

}  // namespace

void RunCommand(HWND controlWindow, UINT command) {
    // Unsigned on purpose: an identifier below the base becomes a large row and fails the test.
    const UINT toggleRow = command - CmdTogglePinBase;
    const UINT minSizeRow = command - CmdMinSizeBase;
    if (toggleRow < MaxMenuWindows) {
        ToggleRow(toggleRow);
        return;
    }
    if (minSizeRow < MaxMenuWindows) {
        PinRowAtItsSize(minSizeRow);
        return;
    }
    const auto* const known = std::find_if(std::begin(Commands), std::end(Commands),
                                           [&](const Command& c) { return c.id == command; });
    if (known != std::end(Commands)) {
        known->action(controlWindow);
    }
}

}  // namespace morvane
