#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/win.h"
#include "desktop/app_theme_setting.h"
#include "desktop/control_stand_in.h"
#include "desktop/engine_fixture.h"

namespace morvane::test {

// This process's open About dialog, or null.
[[nodiscard]] HWND AboutDialog();

[[nodiscard]] inline HWND BodyOf(HWND dialog) {
    return GetDlgItem(dialog, 100);
}
[[nodiscard]] inline HWND ButtonOf(HWND dialog) {
    return GetDlgItem(dialog, 101);
}

// True if the dialog is open and its button has the focus.
[[nodiscard]] bool AboutHasFocus();

// Asks an open dialog to close.
void CloseAbout();

// The control's rectangle in its dialog's client pixels.
[[nodiscard]] RECT PlaceOf(HWND control);

// A window of this process and what it is asked for, in the words of Described.
using Request = std::pair<HWND, std::string>;

// The requests that this process makes during the call.
[[nodiscard]] std::vector<Request> RequestsOf(const std::function<void()>& call);

// The first opening in this process. It fails on purpose: its class is not registered. That cannot
// be tested later, because a registered class stays.
struct FirstOpening {
    int refusedRegistrations = 0;
    std::size_t ownerChanges = 0;  // how often the owner was enabled or disabled
};

// Every fixture whose tests open the dialog calls this. Opens nothing after the first time.
FirstOpening MakeFirstOpening(ControlStandIn& owner);

// The About dialog in this process, owned by a control window, in English and with no theme chosen.
class AboutDialogTest : public EngineTest {
protected:
    void SetUp() override;
    void TearDown() override;

    [[nodiscard]] ControlStandIn& Control() { return control_; }

    // Opens the dialog as the program does, runs the steps while it is open, and closes it.
    void Open(std::vector<ControlStandIn::Step> steps);

    // Opens the dialog, waits until it has the focus, calls look once, and closes the dialog.
    void OpenAndLook(const std::function<void(HWND dialog)>& look);

private:
    // Empty if the test is skipped: the setting is then the user's own.
    std::optional<AppThemeSetting> setting_;
    ControlStandIn control_;
};

}  // namespace morvane::test
