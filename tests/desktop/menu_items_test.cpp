// The top level of the tray menu, read back item by item.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "desktop/interface_texts.h"
#include "desktop/menu_fixture.h"
#include "desktop/menu_reader.h"
#include "pin/candidates.h"
#include "support/test_environment.h"
#include "support/test_files.h"
#include "ui/active_window.h"
#include "ui/menu_build.h"
#include "ui/menu_rows.h"

namespace morvane::test {
namespace {

using Lines = std::vector<std::wstring>;

std::wstring With(const wchar_t* head, const wchar_t* text) {
    return std::wstring(head).append(text);
}

// The top level with pinning on and no Startup shortcut.
Lines MainLevel(const InterfaceTexts& texts) {
    return {
        With(L"1002 checked: ", texts.alwaysOnTop),
        L"-",
        With(L"> ", texts.addRemove),
        With(L"> ", texts.addRemoveMinSize),
        L"-",
        With(L"1003: ", texts.openSettings),
        With(L"1001: ", texts.applyNow),
        With(L"1010: ", texts.startWithWindows),
        L"-",
        With(L"1009: ", texts.about),
        L"-",
        With(L"1004: ", texts.exit),
    };
}

using MenuItemsTest = MenuTest;

TEST_F(MenuItemsTest, EveryTextIsInItsPlaceInAllLanguages) {
    const HWND window = Sized(L"Main - 1", 640, 480);
    ASSERT_TRUE(Other().BringToForeground(window));
    PrepareMenuState();
    Other().Hide(window);
    RebuildCandidates();
    ASSERT_TRUE(CandidateList().empty());
    for (const InterfaceTexts& texts : TextsOfAllLanguages()) {
        ChooseLanguage(texts.code);
        const Menu menu = BuildTrayMenu();
        EXPECT_EQ(DescribedMenu(menu.get()), MainLevel(texts));
        const std::wstring noWindows = With(L"0 grayed: ", texts.noWindows);
        EXPECT_EQ(DescribedMenu(GetSubMenu(menu.get(), 2)), Lines({noWindows}));
        EXPECT_EQ(DescribedMenu(GetSubMenu(menu.get(), 3)),
                  Lines({With(L"0 grayed: ", texts.noActiveWindow), L"-", noWindows}));
        Other().Show(window, SW_SHOWNA);
        const Menu minSize = BuildMinSizeMenu();
        EXPECT_EQ(DescribedItem(minSize.get(), 0),
                  RowLine(1006, 1, L"free", With(texts.activePrefix, L"Main - 1 (640 x 480)")));
        Other().Hide(window);
        ClearMenuRows();
    }
}

TEST_F(MenuItemsTest, OnlyTheCheckMarksOfTheMainLevelEverChange) {
    struct Case {
        const char* name;
        std::string settings;
        bool isOn;
        bool startsWithWindows;
    };
    const Case cases[] = {
        {"nothing pinned", "@pinning=1\n", true, false},
        {"switched off", "@pinning=0\n", false, false},
        {"starts with Windows", "@pinning=1\n", true, true},
        {"full list", FullSettings(), true, false},
        {"all at once", "@pinning=0\n" + FullSettings(), false, true},
    };
    for (const Case& item : cases) {
        LoadSettings(item.settings);
        EmptyStartupFolder();
        if (item.startsWithWindows) {
            ASSERT_TRUE(WriteFileBytes(StartupShortcut(), "a shortcut"));
        }
        Lines expected = MainLevel(TextsOfAllLanguages().front());
        expected[0] = item.isOn ? L"1002 checked: Always on top" : L"1002: Always on top";
        expected[7] = item.startsWithWindows ? L"1010 checked: Start with Windows"
                                             : L"1010: Start with Windows";
        const Menu menu = BuildTrayMenu();
        EXPECT_EQ(DescribedMenu(menu.get()), expected) << item.name;
    }
}

}  // namespace
}  // namespace morvane::test
