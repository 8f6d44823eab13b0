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

// While it lives, this thread cannot create windows of the class. Only one at a time.
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

// The result of the first opening in this process. It fails on purpose: a class that refuses to
// create windows holds the dialog's name. This cannot be tested later, once the dialog has
// registered its own class.
struct FirstOpening {
    bool foundClassTaken = false;
    bool triedToCreate = false;
    bool sawOwnerDisabled = false;
};

// Every fixture whose tests open the dialog calls this. Does nothing after the first time.
void MakeFirstOpening(ControlStandIn& owner);
[[nodiscard]] FirstOpening ResultOfFirstOpening();

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
