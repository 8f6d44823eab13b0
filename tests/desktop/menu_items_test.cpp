// The top level of the tray menu, read back item by item.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "desktop/menu_fixture.h"
#include "desktop/menu_reader.h"
#include "pin/candidates.h"
#include "support/languages.h"
#include "support/test_environment.h"
#include "support/test_files.h"
#include "ui/active_window.h"
#include "ui/menu_build.h"
#include "ui/menu_rows.h"

namespace morvane::test {
namespace {

std::wstring With(const wchar_t* head, const wchar_t* text) {
    return std::wstring(head).append(text);
}

using MenuItemsTest = MenuTest;

TEST_F(MenuItemsTest, EveryTextIsInItsPlaceInAllLanguages) {
    const HWND window = Sized(L"Main - 1", 640, 480);
    ASSERT_TRUE(Other().BringToForeground(window));
    PrepareMenuState();
    Other().Hide(window);
    RebuildCandidates();
    ASSERT_TRUE(CandidateList().empty());
    for (const auto& [language, code, longCode] : AllLanguages) {
        ChooseLanguage(code);
        const Menu menu = BuildTrayMenu();
        EXPECT_EQ(DescribedMenu(menu.get()), MainLevel(language));
        const std::wstring noWindows = With(L"0 grayed: ", ExpectedText(StrNoWindows, language));
        const std::wstring noActive =
            With(L"0 grayed: ", ExpectedText(StrNoActiveWindow, language));
        EXPECT_EQ(DescribedMenu(GetSubMenu(menu.get(), 2)), Lines({noWindows}));
        EXPECT_EQ(DescribedMenu(GetSubMenu(menu.get(), 3)), Lines({noActive, L"-", noWindows}));
        Other().Show(window, SW_SHOWNA);
        const Menu minSize = BuildMinSizeMenu();
        const std::wstring active =
            With(ExpectedText(StrActivePrefix, language), L"Main - 1 (640 x 480)");
        EXPECT_EQ(DescribedItem(minSize.get(), 0), RowLine(1006, 1, L"free", active));
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
        Lines expected = MainLevel(Language::English);
        expected[0] = item.isOn ? L"1002 checked: Always on top" : L"1002: Always on top";
        expected[7] = item.startsWithWindows ? L"1010 checked: Start with Windows"
                                             : L"1010: Start with Windows";
        const Menu menu = BuildTrayMenu();
        EXPECT_EQ(DescribedMenu(menu.get()), expected) << item.name;
    }
}

}  // namespace
}  // namespace morvane::test
