#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/owners.h"
#include "base/win.h"
#include "desktop/app_theme_setting.h"
#include "desktop/control_stand_in.h"
#include "desktop/engine_fixture.h"

namespace morvane::test {

// The open About dialog of this process; null when there is none.
[[nodiscard]] HWND AboutDialog();

[[nodiscard]] inline HWND BodyOf(HWND dialog) {
    return GetDlgItem(dialog, 100);
}
[[nodiscard]] inline HWND ButtonOf(HWND dialog) {
    return GetDlgItem(dialog, 101);
}

// The dialog is open and its button has the focus.
[[nodiscard]] bool AboutHasFocus();

// Asks an open dialog to close.
void CloseAbout();

// The control's rectangle in client pixels of its dialog.
[[nodiscard]] RECT PlaceOf(HWND control);

// While it lives this thread can make no window of the class. One at a time.
class ClassRefusal {
public:
    explicit ClassRefusal(std::wstring className);
    ClassRefusal(const ClassRefusal&) = delete;
    ClassRefusal& operator=(const ClassRefusal&) = delete;
    ClassRefusal(ClassRefusal&&) = delete;
    ClassRefusal& operator=(ClassRefusal&&) = delete;
    ~ClassRefusal();

    // How many windows have been refused.
    [[nodiscard]] int Count() const { return count_; }

private:
    static LRESULT CALLBACK OnHook(int code, WPARAM wParam, LPARAM lParam);

    struct HookTraits {
        using Handle = HHOOK;
        static Handle Empty() noexcept { return nullptr; }
        static void Close(Handle hook) noexcept { UnhookWindowsHookEx(hook); }
    };

    std::wstring className_;
    int count_ = 0;
    Owner<HookTraits> hook_;
};

// What the first opening of the process met: the dialog's class could not be registered, as the
// name was taken, by a class that makes no windows. Later openings cannot meet that.
struct FirstOpening {
    bool foundClassTaken = false;
    bool triedToCreate = false;
    bool sawOwnerDisabled = false;
};

// For every fixture whose tests open the dialog. Does nothing after the first time.
void MakeFirstOpening(ControlStandIn& owner);
[[nodiscard]] FirstOpening ResultOfFirstOpening();

// About in this process, owned by a control window, in English and with no theme chosen.
class AboutDialogTest : public EngineTest {
protected:
    void SetUp() override;
    void TearDown() override;

    [[nodiscard]] ControlStandIn& Control() { return control_; }

    // Opens the dialog with the program's own call, goes through the steps while it is open, and
    // closes it.
    void Open(std::vector<ControlStandIn::Step> steps);

    // Opens the dialog, waits until the keyboard is its, looks at it once, and closes it.
    void OpenAndLook(const std::function<void(HWND dialog)>& look);

private:
    // Empty where the test is skipped: there the setting is the user's own.
    std::optional<AppThemeSetting> setting_;
    ControlStandIn control_;
};

}  // namespace morvane::test
