#include "desktop/about_fixture.h"

#include <utility>

#include "base/process.h"
#include "support/languages.h"
#include "support/window_state.h"
#include "ui/about.h"

namespace morvane::test {
namespace {

constexpr wchar_t AboutClass[] = L"MorvaneAboutDialog";

ClassRefusal* activeRefusal = nullptr;
bool triedTheClassThatTookTheName = false;
std::optional<FirstOpening> firstOpening;

LRESULT CALLBACK RefuseCreation(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        triedTheClassThatTookTheName = true;
        return FALSE;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

FirstOpening OpenWithoutClass(ControlStandIn& control) {
    FirstOpening result;
    WNDCLASSW taken{};
    taken.lpfnWndProc = RefuseCreation;
    taken.hInstance = GetModuleHandleW(nullptr);
    taken.lpszClassName = AboutClass;
    const WindowClassOwner owner(RegisterClassW(&taken) != 0 ? AboutClass : nullptr);
    result.foundClassTaken = static_cast<bool>(owner);
    control.Forget();
    ShowAboutDialog(control.Get());
    result.triedToCreate = triedTheClassThatTookTheName;
    result.sawOwnerDisabled = control.Count(WM_ENABLE) != 0;
    return result;
}

}  // namespace

ClassRefusal::ClassRefusal(std::wstring className) : className_(std::move(className)) {
    activeRefusal = this;
    hook_.reset(SetWindowsHookExW(WH_CBT, OnHook, nullptr, GetCurrentThreadId()));
}

ClassRefusal::~ClassRefusal() {
    hook_.reset();
    activeRefusal = nullptr;
}

LRESULT CALLBACK ClassRefusal::OnHook(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HCBT_CREATEWND &&
        WindowClass(reinterpret_cast<HWND>(wParam)) == activeRefusal->className_) {
        ++activeRefusal->count_;
        return 1;
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

void MakeFirstOpening(ControlStandIn& owner) {
    if (!firstOpening) {
        firstOpening = OpenWithoutClass(owner);
    }
}

FirstOpening ResultOfFirstOpening() {
    return firstOpening.value_or(FirstOpening{});
}

HWND AboutDialog() {
    for (const HWND window : VisibleWindowsOfClass(AboutClass)) {
        if (ProcessOf(window) == GetCurrentProcessId()) {
            return window;
        }
    }
    return nullptr;
}

bool AboutHasFocus() {
    const HWND dialog = AboutDialog();
    return dialog != nullptr && GetFocus() == ButtonOf(dialog);
}

void CloseAbout() {
    if (const HWND dialog = AboutDialog()) {
        PostMessageW(dialog, WM_CLOSE, 0, 0);
    }
}

RECT PlaceOf(HWND control) {
    RECT place = WindowRect(control);
    MapWindowPoints(nullptr, GetParent(control), reinterpret_cast<POINT*>(&place), 2);
    return place;
}

void AboutDialogTest::SetUp() {
    EngineTest::SetUp();
    if (IsSkipped()) {
        return;
    }
    setting_.emplace();
    ChooseLanguage(L"en");
    Process().controlWindow = control_.Get();
    ASSERT_NE(control_.Get(), nullptr);
    MakeFirstOpening(control_);
}

void AboutDialogTest::TearDown() {
    ChooseLanguage(L"en");
    EngineTest::TearDown();
}

void AboutDialogTest::Open(std::vector<ControlStandIn::Step> steps) {
    control_.Run([this] { ShowAboutDialog(control_.Get()); }, std::move(steps), CloseAbout);
}

void AboutDialogTest::OpenAndLook(const std::function<void(HWND dialog)>& look) {
    Open({AboutHasFocus, [&look] {
              look(AboutDialog());
              return true;
          }});
}

}  // namespace morvane::test
