#include "app/commands.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

#include "app/reported_commands.h"
#include "pin/candidates.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "pin/pin_operations.h"
#include "shell/engine_binding.h"
#include "shell/settings_editor.h"
#include "ui/about.h"
#include "ui/active_window.h"
#include "ui/command_ids.h"

namespace morvane {
namespace {

void ToggleAlwaysOnTop() {
    RefreshEngineBinding();
    SetPinning(!Engine().pinList.pinning);
}

struct Command {
    UINT id;
    void (*action)(HWND controlWindow);
};

constexpr Command Commands[] = {
    {CmdApplyNow, [](HWND /*controlWindow*/) { RunPass(); }},
    {CmdAlwaysOnTop, [](HWND /*controlWindow*/) { ToggleAlwaysOnTop(); }},
    {CmdOpenSettings, [](HWND /*controlWindow*/) { OpenSettings(); }},
    {CmdExit, [](HWND controlWindow) { DestroyWindow(controlWindow); }},
    {CmdMinSizeActive, [](HWND /*controlWindow*/) { PinWindowAtCurrentSize(ActiveWindow()); }},
    {CmdAbout, ShowAboutDialog},
    {CmdStartWithWindows, [](HWND /*controlWindow*/) { ToggleStartWithWindows(); }},
};

// Uses the windows as they are now, so a row whose window has closed meanwhile may name another.
// A "(min size)" command below uses the list that its menu was built from: it measures the very
// window that was shown.
void ToggleRow(std::size_t row) {
    RebuildCandidates();
    if (const CandidateWindow* const candidate = CandidateInRow(row)) {
        RefreshEngineBinding();
        // A copy: while the pass inside waits for another window, a message sent to the control
        // window can rebuild the list.
        const std::wstring title = candidate->title;
        ToggleWindow(title);
    }
}

void PinRowAtItsSize(std::size_t row) {
    if (const CandidateWindow* const candidate = CandidateInRow(row)) {
        PinWindowAtCurrentSize(candidate->window);
    }
}

}  // namespace

void RunCommand(HWND controlWindow, UINT command) {
    // Unsigned: an identifier below the base wraps to a large row and fails the test.
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
    const auto* const known = std::ranges::find(Commands, command, &Command::id);
    if (known != std::end(Commands)) {
        known->action(controlWindow);
    }
}

bool RunPass() {
    RefreshEngineBinding();
    return ApplyAll();
}

}  // namespace morvane
