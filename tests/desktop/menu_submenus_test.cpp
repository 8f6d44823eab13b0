// The menu's two window lists, read back item by item.

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "desktop/menu_fixture.h"
#include "desktop/menu_reader.h"
#include "pin/candidates.h"
#include "pin/engine.h"
#include "ui/active_window.h"
#include "ui/menu_build.h"
#include "ui/menu_rows.h"

namespace morvane::test {
namespace {

constexpr const wchar_t* NoWindows = L"0 grayed: (No windows)";
constexpr const wchar_t* NoActiveWindow = L"0 grayed: (No active window)";

class SubmenusTest : public MenuTest {
protected:
    // Each list is built first in its opening, so that its item data starts at 1.
    [[nodiscard]] static Lines AddRemove() {
        ClearMenuRows();
        const Menu menu = BuildAddRemoveMenu();
        return DescribedMenu(menu.get());
    }
    [[nodiscard]] static Lines MinSize() {
        ClearMenuRows();
        const Menu menu = BuildMinSizeMenu();
        return DescribedMenu(menu.get());
    }

    // Leaves the menu without an active window, whatever was in the foreground.
    void LoseActiveWindow() {
        const HWND window = Window(L"Active for a moment");
        ASSERT_TRUE(Other().BringToForeground(window));
        PrepareMenuState();
        ASSERT_EQ(ActiveWindow(), window);
        Other().Destroy(window);
    }

    void Activate(HWND window) {
        ASSERT_TRUE(Other().BringToForeground(window));
        PrepareMenuState();
        ASSERT_EQ(ActiveWindow(), window);
    }
};

TEST_F(SubmenusTest, UntitledActiveWindowIsShownAsTwoBlanksWithoutCandidates) {
    LoadSettings("alpha\nactive\t100\t100\n \t200\t200\n");
    Activate(Sized(L"", 320, 240));
    ASSERT_GE(Engine().pinList.entries.size(), 2U);
    EXPECT_EQ(AddRemove(), Lines({NoWindows}));
    EXPECT_EQ(MinSize(), Lines({L"1006 row 1 free: Active:  (320 x 240)", L"-", NoWindows}))
        << "no entry matches an empty title";
}

TEST_F(SubmenusTest, RowsAreInTheOrderOfTheListWithTheStatesOfTheirBestEntries) {
    const Lines listed = {L"2500 row 1 free: alpha", L"2501 row 2 pinned: beta",
                          L"2502 row 3 pinned: delta", L"2503 row 4 pinned: gamma",
                          L"2504 row 5 pinned: notepad"};
    const Lines sized = {
        L"1006 row 1 sized: Active: gamma (640 x 480)", L"-",
        L"3000 row 2 free: alpha (300 x 200)",          L"3001 row 3 pinned: beta (300 x 200)",
        L"3002 row 4 sized: delta (300 x 200)",         L"3003 row 5 sized: gamma (640 x 480)",
        L"3004 row 6 sized: notepad (300 x 200)"};
    Activate(Sized(L"gamma", 640, 480));
    for (const wchar_t* const title : {L"notepad", L"delta", L"beta", L"alpha"}) {
        static_cast<void>(Sized(title, 300, 200));
    }
    RebuildCandidates();
    // Even while pinning is off.
    for (const char* const pinning : {"@pinning=1\n", "@pinning=0\n"}) {
        LoadSettings(std::string(pinning) +
                     "beta\nGAMMA\t400\t0\ndelta\t0\t300\nnote\nNotepad\t800\t600\n");
        EXPECT_EQ(AddRemove(), listed) << pinning;
        EXPECT_EQ(MinSize(), sized) << pinning;
    }
}

TEST_F(SubmenusTest, SkippedWindowsLeaveGapsInTheIdentifiers) {
    LoseActiveWindow();
    static_cast<void>(Sized(L"a", 300, 200));
    const HWND minimised = Sized(L"b", 300, 200);
    static_cast<void>(Other().Create({.title = L"c", .style = WS_POPUP, .width = 0, .height = 50}));
    static_cast<void>(Other().Create({.title = L"d", .style = WS_POPUP, .width = 50, .height = 0}));
    static_cast<void>(Other().Create({.title = L"e", .style = WS_POPUP, .width = 1, .height = 1}));
    const HWND dead = Sized(L"f", 300, 200);
    static_cast<void>(Sized(L"g", 310, 210));
    Other().Minimise(minimised);
    RebuildCandidates();
    Other().Destroy(dead);
    // The other list omits nothing, not even a window that died after the list was built.
    EXPECT_EQ(AddRemove(),
              Lines({L"2500 row 1 free: a", L"2501 row 2 free: b", L"2502 row 3 free: c",
                     L"2503 row 4 free: d", L"2504 row 5 free: e", L"2505 row 6 free: f",
                     L"2506 row 7 free: g"}));
    EXPECT_EQ(MinSize(), Lines({NoActiveWindow, L"-", L"3000 row 1 free: a (300 x 200)",
                                L"3004 row 2 free: e (1 x 1)", L"3006 row 3 free: g (310 x 210)"}));
}

TEST_F(SubmenusTest, ListWithOnlySkippedCandidatesHasNoLineAboutMissingWindows) {
    LoseActiveWindow();
    const HWND minimised = Sized(L"Alpha", 300, 200);
    Other().Minimise(minimised);
    const HWND flat =
        Other().Create({.title = L"Beta", .style = WS_POPUP, .width = 0, .height = 0});
    RebuildCandidates();
    const Lines both = {L"2500 row 1 free: Alpha", L"2501 row 2 free: Beta"};
    EXPECT_EQ(AddRemove(), both);
    EXPECT_EQ(MinSize(), Lines({NoActiveWindow, L"-"}));
    // Neither an untitled nor an owned window is a candidate.
    Activate(Sized(L"", 320, 240));
    EXPECT_EQ(AddRemove(), both);
    EXPECT_EQ(MinSize(), Lines({L"1006 row 1 free: Active:  (320 x 240)", L"-"}));
    Activate(Other().Create({.title = L"Palette", .style = WS_POPUP, .owner = flat}));
    EXPECT_EQ(AddRemove(), both);
    EXPECT_EQ(MinSize(), Lines({L"1006 row 1 free: Active: Palette (400 x 300)", L"-"}));
}

TEST_F(SubmenusTest, ActiveWindowMustStillBeUsableWhenTheListIsBuilt) {
    struct Case {
        const char* name;
        void (*change)(Actor& actor, HWND window);
    };
    const Case cases[] = {
        {"gone", [](Actor& actor, HWND window) { actor.Destroy(window); }},
        {"minimised", [](Actor& actor, HWND window) { actor.Minimise(window); }},
        {"hidden", [](Actor& actor, HWND window) { actor.Hide(window); }},
        {"without a size", [](Actor& actor, HWND window) { actor.Place(window, 9, 9, 0, 0); }},
    };
    for (const Case& item : cases) {
        const HWND window = Other().Create({.title = L"Active", .style = WS_POPUP});
        Activate(window);
        EXPECT_EQ(MinSize().front(), L"1006 row 1 free: Active: Active (400 x 300)") << item.name;
        item.change(Other(), window);
        EXPECT_EQ(MinSize().front(), NoActiveWindow) << item.name;
    }
}

// A user reaches the tray icon through these; one may be in front when the timer ticks or the menu
// opens.
TEST_F(SubmenusTest, TaskbarsAndTheTrayFlyoutAreNeverTheActiveWindow) {
    for (const wchar_t* const className :
         {L"Shell_TrayWnd", L"Shell_SecondaryTrayWnd", L"NotifyIconOverflowWindow",
          L"TopLevelWindowForOverflowXamlIsland"}) {
        SCOPED_TRACE(testing::PrintToString(className));
        const HWND surface = Other().Create({.className = className, .title = L""});
        const HWND document = Sized(L"Document", 300, 200);
        Activate(document);
        ASSERT_TRUE(Other().BringToForeground(surface));
        NoteForegroundWindow();
        PrepareMenuState();
        EXPECT_EQ(ActiveWindow(), document);
        EXPECT_EQ(MinSize().front(), L"1006 row 1 free: Active: Document (300 x 200)");
        Other().Destroy(document);
    }
}

TEST_F(SubmenusTest, ActiveWindowIsMeasuredAndNamedWhenTheListIsBuilt) {
    const HWND window = Sized(L"Before", 300, 200);
    Activate(window);
    Other().SetTitle(window, L"After");
    Other().Place(window, 50, 50, 500, 400);
    LoadSettings("after\t1\t1\n");
    EXPECT_EQ(MinSize(), Lines({L"1006 row 1 sized: Active: After (500 x 400)", L"-",
                                L"3000 row 2 free: Before (500 x 400)"}));
}

TEST_F(SubmenusTest, LongTitlesAreCutAfterTheSizeIsAppended) {
    struct Case {
        std::size_t length;
        std::wstring listed;
        std::wstring sized;
    };
    const std::wstring size = L" (300 x 200)";  // 12 units
    const auto x = [](std::size_t count) { return std::wstring(count, L'x'); };
    LoseActiveWindow();
    const Case cases[] = {
        {68, x(68), x(68) + size},
        {69, x(69), x(69) + size.substr(0, 8) + L"..."},
        {77, x(77), x(77) + L"..."},
        {80, x(80), x(77) + L"..."},
        {81, x(77) + L"...", x(77) + L"..."},
        {100, x(77) + L"...", x(77) + L"..."},
        {511, x(77) + L"...", x(77) + L"..."},
    };
    for (const Case& item : cases) {
        const HWND window = Sized(x(item.length), 300, 200);
        RebuildCandidates();
        EXPECT_EQ(AddRemove(), Lines({L"2500 row 1 free: " + item.listed})) << item.length;
        EXPECT_EQ(MinSize().back(), L"3000 row 1 free: " + item.sized) << item.length;
        Other().Destroy(window);
    }
}

TEST_F(SubmenusTest, LongTitleOfTheActiveWindowIsCutWithItsPrefix) {
    Activate(Sized(std::wstring(100, L'x'), 300, 200));
    EXPECT_EQ(MinSize().front(), L"1006 row 1 free: Active: " + std::wstring(69, L'x') + L"...");
}

TEST_F(SubmenusTest, TitlesAreShownUnitByUnit) {
    const std::wstring strange = L"a & b\tc && d\xD83D e\xDE00 \xFFFE\x200F";
    // The cut splits a surrogate pair.
    const std::wstring pairs = std::wstring(76, L'y') + L"\xD83D\xDE00\xD83D\xDE00\xD83D\xDE00";
    LoseActiveWindow();
    static_cast<void>(Sized(strange, 300, 200));
    static_cast<void>(Sized(pairs, 300, 200));
    RebuildCandidates();
    const std::wstring cut = std::wstring(76, L'y') + L"\xD83D...";
    EXPECT_EQ(AddRemove(), Lines({L"2500 row 1 free: " + strange, L"2501 row 2 free: " + cut}));
    EXPECT_EQ(MinSize(),
              Lines({NoActiveWindow, L"-", L"3000 row 1 free: " + strange + L" (300 x 200)",
                     L"3001 row 2 free: " + cut}));
}

TEST_F(SubmenusTest, ListsEndAtTheFiveHundredthCandidate) {
    LoseActiveWindow();
    int made = 0;
    for (const int count : {499, 500, 501, 600}) {
        std::vector<std::wstring> titles;
        titles.reserve(static_cast<std::size_t>(count));
        for (int number = 0; number < count; ++number) {
            titles.push_back(L"w" + std::to_wstring(number));
        }
        std::ranges::sort(titles);
        for (; made < count; ++made) {
            static_cast<void>(
                Other().Create({.title = L"w" + std::to_wstring(made), .width = 200}));
        }
        RebuildCandidates();
        ASSERT_EQ(CandidateList().size(), static_cast<std::size_t>(count));
        const std::size_t rows = count < 500 ? 499 : 500;
        const Lines listed = AddRemove();
        const Lines sized = MinSize();
        ASSERT_EQ(listed.size(), rows) << count;
        ASSERT_EQ(sized.size(), rows + 2) << count;
        for (std::size_t row = 0; row < rows; ++row) {
            const auto id = static_cast<UINT>(row);
            EXPECT_EQ(listed[row], RowLine(2500 + id, row + 1, L"free", titles[row])) << count;
            EXPECT_EQ(sized[row + 2],
                      RowLine(3000 + id, row + 1, L"free", titles[row] + L" (200 x 300)"))
                << count;
        }
    }
}

}  // namespace
}  // namespace morvane::test
