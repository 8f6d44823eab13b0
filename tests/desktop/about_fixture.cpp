#include "desktop/about_fixture.h"

#include "base/process.h"
#include "support/import_patch.h"
#include "support/import_watch.h"
#include "support/languages.h"
#include "support/window_state.h"
#include "ui/about.h"

namespace morvane::test {
namespace {

std::optional<FirstOpening> firstOpening;

ATOM WINAPI RefuseRegistration(const WNDCLASSW* /*windowClass*/) {
    if (firstOpening) {
        ++firstOpening->refusedRegistrations;
    }
    return 0;
}

}  // namespace

std::vector<Request> RequestsOf(const std::function<void()>& call) {
    std::vector<Request> requests;
    const ImportWatch<decltype(&SetWindowPos)> watch(
        "SetWindowPos",
        [&requests](HWND window, HWND insertAfter, int x, int y, int cx, int cy, UINT flags) {
            PositionRequest request;
            request.insertAfter = insertAfter;
            request.x = x;
            request.y = y;
            request.cx = cx;
            request.cy = cy;
            request.flags = flags;
            requests.emplace_back(window, Described({request}).front());
        });
    call();
    return requests;
}

FirstOpening MakeFirstOpening(ControlStandIn& owner) {
    if (!firstOpening) {
        firstOpening.emplace();
        const ImportPatch<decltype(&RegisterClassW)> patch("RegisterClassW", RefuseRegistration);
        owner.Forget();
        ShowAboutDialog(owner.Get());
        firstOpening->ownerChanges = owner.Count(WM_ENABLE);
    }
    return *firstOpening;
}

HWND AboutDialog() {
    return HighestWindowOfClass(L"MorvaneAboutDialog", GetCurrentProcessId());
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
