// The top level of the tray menu, read back item by item.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "desktop/menu_fixture.h"
#include "desktop/menu_reader.h"
#include "pin/candidates.h"
#include "pin/engine.h"
#include "support/languages.h"
#include "support/test_environment.h"
#include "support/test_files.h"
#include "ui/active_window.h"
#include "ui/menu_build.h"
#include "ui/menu_rows.h"

namespace morvane::test {
namespace {

using Lines = std::vector<std::wstring>;

constexpr int AlwaysOnTopItem = 0;
constexpr int StartWithWindowsItem = 7;

// The top level with pinning on and no Startup shortcut.
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

class MenuItemsTest : public MenuTest {
protected:
    [[nodiscard]] static std::wstring StartItem() {
        const Menu menu = BuildTrayMenu();
        return DescribedItem(menu.get(), StartWithWindowsItem);
    }
};

TEST_F(MenuItemsTest, MainLevelHasTwelveItemsInOrder) {
    const Menu menu = BuildTrayMenu();
    EXPECT_EQ(DescribedMenu(menu.get()), Lines({
                                             L"1002 checked: Always on top",
                                             L"-",
                                             L"> Add / Remove",
                                             L"> Add / Remove (min size)",
                                             L"-",
                                             L"1003: Open settings",
                                             L"1001: Apply now",
                                             L"1010: Start with Windows",
                                             L"-",
                                             L"1009: About",
                                             L"-",
                                             L"1004: Exit",
                                         }));
}

TEST_F(MenuItemsTest, EveryTextIsInItsPlaceInAllLanguages) {
    const HWND gone = Window(L"Gone");
    ASSERT_TRUE(Other().BringToForeground(gone));
    PrepareMenuState();
    Other().Destroy(gone);
    RebuildCandidates();
    ASSERT_TRUE(CandidateList().empty());
    for (const auto& [language, code, longCode] : AllLanguages) {
        ChooseLanguage(code);
        const Menu menu = BuildTrayMenu();
        EXPECT_EQ(DescribedMenu(menu.get()), MainLevel(language));
        const std::wstring grayed = L"0 grayed: ";
        const std::wstring noWindows = grayed + ExpectedText(StrNoWindows, language);
        EXPECT_EQ(DescribedMenu(GetSubMenu(menu.get(), 2)), Lines({noWindows}));
        const std::wstring noActive = grayed + ExpectedText(StrNoActiveWindow, language);
        EXPECT_EQ(DescribedMenu(GetSubMenu(menu.get(), 3)), Lines({noActive, L"-", noWindows}));
    }
}

TEST_F(MenuItemsTest, ActiveWindowIsNamedInAllLanguages) {
    const HWND window = Sized(L"Main - 1", 640, 480);
    ASSERT_TRUE(Other().BringToForeground(window));
    PrepareMenuState();
    for (const auto& [language, code, longCode] : AllLanguages) {
        ChooseLanguage(code);
        ClearMenuRows();
        const Menu menu = BuildMinSizeMenu();
        const std::wstring prefix = ExpectedText(StrActivePrefix, language);
        EXPECT_EQ(DescribedItem(menu.get(), 0),
                  RowLine(1006, 1, L"free", prefix + L"Main - 1 (640 x 480)"));
    }
}

TEST_F(MenuItemsTest, CheckMarkOfAlwaysOnTopShowsTheMasterSwitch) {
    for (const bool pinning : {false, true}) {
        Engine().pinList.pinning = pinning;
        const Menu menu = BuildTrayMenu();
        EXPECT_EQ(DescribedItem(menu.get(), AlwaysOnTopItem),
                  pinning ? L"1002 checked: Always on top" : L"1002: Always on top");
    }
}

TEST_F(MenuItemsTest, CheckMarkOfStartWithWindowsFollowsOutsideChangesToTheFile) {
    EXPECT_EQ(StartItem(), L"1010: Start with Windows");
    // Only the file's presence counts.
    ASSERT_TRUE(WriteFileBytes(StartupShortcut(), "no shortcut at all"));
    EXPECT_EQ(StartItem(), L"1010 checked: Start with Windows");
    ASSERT_NE(DeleteFileW(StartupShortcut().c_str()), FALSE);
    EXPECT_EQ(StartItem(), L"1010: Start with Windows");
    ASSERT_NE(CreateDirectoryW(StartupShortcut().c_str(), nullptr), FALSE);
    EXPECT_EQ(StartItem(), L"1010 checked: Start with Windows");
    ASSERT_NE(RemoveDirectoryW(StartupShortcut().c_str()), FALSE);
    EXPECT_EQ(StartItem(), L"1010: Start with Windows");
}

TEST_F(MenuItemsTest, StartWithWindowsIsUncheckedWithoutAStartupFolder) {
    const ShellFolderOverride nowhere(L"Startup", L"Q:\\nowhere");
    EXPECT_EQ(StartItem(), L"1010: Start with Windows");
}

TEST_F(MenuItemsTest, NothingInTheMainLevelIsEverGrayed) {
    struct Case {
        const char* name;
        std::string settings;
        bool startsWithWindows;
    };
    const Case cases[] = {
        {"nothing pinned", "@pinning=1\n", false},
        {"switched off", "@pinning=0\n", false},
        {"starts with Windows", "@pinning=1\n", true},
        {"full list", FullSettings(), false},
        {"all at once", "@pinning=0\n" + FullSettings(), true},
    };
    for (const Case& item : cases) {
        LoadSettings(item.settings);
        EmptyStartupFolder();
        if (item.startsWithWindows) {
            ASSERT_TRUE(WriteFileBytes(StartupShortcut(), "a shortcut"));
        }
        const Menu menu = BuildTrayMenu();
        ASSERT_EQ(GetMenuItemCount(menu.get()), 12) << item.name;
        for (int position = 0; position < 12; ++position) {
            const std::wstring line = DescribedItem(menu.get(), position);
            EXPECT_EQ(line.find(L"grayed"), std::wstring::npos) << item.name << position;
        }
    }
}

TEST_F(MenuItemsTest, SubmenusListTheWindows) {
    const HWND window = Sized(L"Alpha", 300, 200);
    ASSERT_TRUE(Other().BringToForeground(window));
    PrepareMenuState();
    const Menu menu = BuildTrayMenu();
    EXPECT_EQ(DescribedMenu(GetSubMenu(menu.get(), 2)), Lines({L"2500 row 1 free: Alpha"}));
    EXPECT_EQ(DescribedMenu(GetSubMenu(menu.get(), 3)),
              Lines({L"1006 row 2 free: Active: Alpha (300 x 200)", L"-",
                     L"3000 row 3 free: Alpha (300 x 200)"}));
}

TEST_F(MenuItemsTest, DestroyingTheMenuDestroysItsSubmenus) {
    Menu menu = BuildTrayMenu();
    const HMENU bare = menu.get();
    const HMENU addRemove = GetSubMenu(bare, 2);
    const HMENU minSize = GetSubMenu(bare, 3);
    ASSERT_TRUE(IsMenu(bare) != FALSE && IsMenu(addRemove) != FALSE && IsMenu(minSize) != FALSE);
    menu.reset();
    EXPECT_FALSE(IsMenu(bare) != FALSE || IsMenu(addRemove) != FALSE || IsMenu(minSize) != FALSE);
}

}  // namespace
}  // namespace morvane::test
