#include "desktop/menu_fixture.h"

#include <utility>

#include "base/process.h"
#include "desktop/menu_reader.h"
#include "support/languages.h"
#include "ui/menu_rows.h"
#include "ui/tray_menu.h"

namespace morvane::test {

void MenuTest::SetUp() {
    EngineTest::SetUp();
    if (IsSkipped()) {
        return;
    }
    ChooseLanguage(L"en");
    ClearMenuRows();
    Process().controlWindow = control_.Get();
    ASSERT_NE(control_.Get(), nullptr);
}

void MenuTest::TearDown() {
    ClearMenuRows();
    ChooseLanguage(L"en");
    EngineTest::TearDown();
}

HWND MenuTest::Sized(std::wstring_view title, int width, int height) {
    WindowSpec spec;
    spec.title = title;
    spec.width = width;
    spec.height = height;
    return Other().Create(spec);
}

void MenuTest::Open(std::vector<ControlStandIn::Step> steps) {
    control_.Run([this] { ShowTrayMenu(control_.Get()); }, std::move(steps), [] { EndMenu(); });
}

void MenuTest::OpenAndLook(const std::function<void()>& look, const std::vector<WPARAM>& keys,
                           std::size_t menus) {
    Open({[] { return MenusOpen(1); },
          [&] {
              Press(keys);
              return true;
          },
          [menus] { return MenusOpen(menus); },
          [&look] {
              look();
              return true;
          }});
}

void MenuTest::Press(const std::vector<WPARAM>& keys) {
    for (const WPARAM key : keys) {
        PostMessageW(control_.Get(), WM_KEYDOWN, key, 0);
    }
}

bool MenuTest::MeasuresRow(ULONG_PTR itemData) {
    MEASUREITEMSTRUCT measure{};
    measure.CtlType = ODT_MENU;
    measure.itemData = itemData;
    return MeasurePinItem(control_.Get(), measure);
}

Lines MainLevel(Language language) {
    const auto with = [language](const wchar_t* head, StringId id) {
        return std::wstring(head).append(ExpectedText(id, language));
    };
    return {
        with(L"1002 checked: ", StrAlwaysOnTop),
        L"-",
        with(L"> ", StrAddRemove),
        with(L"> ", StrAddRemoveMinSize),
        L"-",
        with(L"1003: ", StrOpenSettings),
        with(L"1001: ", StrApplyNow),
        with(L"1010: ", StrStartWithWindows),
        L"-",
        with(L"1009: ", StrAbout),
        L"-",
        with(L"1004: ", StrExit),
    };
}

bool MenusOpen(std::size_t count) {
    return OpenMenuWindows().size() == count;
}

}  // namespace morvane::test
