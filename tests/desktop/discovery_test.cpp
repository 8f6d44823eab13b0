// Which windows a pass works on.

#include "pin/discovery.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "desktop/engine_fixture.h"
#include "pin/candidates.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "support/test_environment.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

class DiscoveryTest : public EngineTest {
protected:
    // Whether a list with just this pattern finds a window with this title. The pattern is set in
    // memory, because the settings file cannot hold every text that a title can.
    [[nodiscard]] bool IsFound(std::wstring_view title, const std::wstring& pattern) {
        const HWND window = Window(title);
        Engine().pinList.entries = {{.pattern = pattern}};
        const bool eligible = IsEligibleWindow(window);
        const std::vector<MatchedWindow> matched = CollectMatchedWindows();
        const bool collected =
            std::any_of(matched.begin(), matched.end(),
                        [window](const MatchedWindow& match) { return match.window == window; });
        EXPECT_EQ(eligible, collected);
        Other().Destroy(window);
        return collected;
    }
};

TEST_F(DiscoveryTest, OnlyVisibleUnownedTitledForeignWindowsQualify) {
    struct Case {
        const char* name;
        WindowSpec spec;
        bool eligible;
    };
    const HWND owner = Window(L"Main window");
    const std::vector<Case> cases = {
        {"ordinary", {.title = L"Alpha"}, true},
        {"without frame", {.title = L"Alpha", .style = WS_POPUP}, true},
        {"tool window", {.title = L"Alpha", .exStyle = WS_EX_TOOLWINDOW}, true},
        {"disabled", {.title = L"Alpha", .style = WS_OVERLAPPEDWINDOW | WS_DISABLED}, true},
        {"without size", {.title = L"Alpha", .style = WS_POPUP, .width = 0, .height = 0}, true},
        {"outside the screen", {.title = L"Alpha", .x = -5000, .y = -5000}, true},
        {"dialog", {.className = L"#32770", .title = L"Alpha"}, true},
        {"matched in the middle", {.title = L"The ALPHA one"}, true},
        {"class that only resembles ours",
         {.className = L"MorvaneHiddenWindow2", .title = L"Alpha"},
         true},
        {"not matched", {.title = L"Alph a"}, false},
        {"invisible", {.title = L"Alpha", .visible = false}, false},
        {"owned", {.title = L"Alpha", .style = WS_POPUP | WS_CAPTION, .owner = owner}, false},
        {"untitled", {.title = L""}, false},
        {"of our own class", {.className = L"MorvaneHiddenWindow", .title = L"Alpha"}, false},
        {"protected", {.className = L"#32770", .title = L"Alpha - Credential"}, false},
    };
    for (const Case& item : cases) {
        SCOPED_TRACE(item.name);
        const HWND window = Other().Create(item.spec);
        ApplySettings("alpha\n");
        EXPECT_EQ(IsEligibleWindow(window), item.eligible);
        EXPECT_EQ(Asked(window).empty(), !item.eligible);
        EXPECT_EQ(Engine().pinnedWindows.count(window), item.eligible ? 1U : 0U);
        EXPECT_EQ(IsTopmost(window), item.eligible);
        Other().Destroy(window);
    }
    EXPECT_FALSE(IsEligibleWindow(nullptr));
}

TEST_F(DiscoveryTest, MinimisedWindowsAreCollected) {
    const HWND window = Window(L"Alpha");
    Other().Minimise(window);
    Engine().pinList.entries = {{.pattern = L"alpha"}};
    ASSERT_EQ(CollectMatchedWindows().size(), 1U);
    EXPECT_EQ(CollectMatchedWindows().front().window, window);
}

TEST_F(DiscoveryTest, ProtectedDialogsAreNeverPinned) {
    const std::vector<std::wstring> protectedTitles = {
        L"User Account Control", L"Windows Security", L"Windows セキュリティ",
        L"Credential",           L"資格情報",         L"Consent UI",
    };
    for (const std::wstring& title : protectedTitles) {
        SCOPED_TRACE(testing::PrintToString(title));
        std::wstring lower = title;
        std::transform(lower.begin(), lower.end(), lower.begin(), [](wchar_t unit) {
            return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit + 32) : unit;
        });
        const HWND exact = Other().Create({.className = L"#32770", .title = title});
        const HWND within =
            Other().Create({.className = L"#32770", .title = L"My " + lower + L" notes"});
        const HWND ordinary = Window(title + L" notes");
        Engine().pinList.entries = {{.pattern = title}};
        EXPECT_FALSE(IsEligibleWindow(exact));
        EXPECT_FALSE(IsEligibleWindow(within));
        EXPECT_TRUE(IsEligibleWindow(ordinary));
        const std::vector<MatchedWindow> matched = CollectMatchedWindows();
        ASSERT_EQ(matched.size(), 1U);
        EXPECT_EQ(matched.front().window, ordinary);
        for (const HWND window : {exact, within, ordinary}) {
            Other().Destroy(window);
        }
    }
}

TEST_F(DiscoveryTest, PassPinsOnlyTheNamesakeOfAProtectedDialog) {
    const HWND dialog = Other().Create({.className = L"#32770", .title = L"User Account Control"});
    const HWND notes = Window(L"User Account Control notes");
    ApplySettings("account\n");
    EXPECT_TRUE(Asked(dialog).empty());
    EXPECT_FALSE(IsTopmost(dialog));
    EXPECT_TRUE(IsTopmost(notes));
}

TEST_F(DiscoveryTest, OwnWindowsAreRecognisedByClassAndByHandle) {
    constexpr const wchar_t* Own = L"MorvaneHiddenWindow";
    const HWND foreign = Window(L"Control");
    EXPECT_TRUE(IsOwnWindow(foreign, Own));
    EXPECT_FALSE(IsOwnWindow(foreign, L"MorvaneHiddenWindow2"));
    EXPECT_FALSE(IsOwnWindow(foreign, L"morvanehiddenwindow")) << "compared exactly";
    EXPECT_FALSE(IsOwnWindow(foreign, L"")) << "the class of a dead window";
    Engine().ownWindow = foreign;
    EXPECT_TRUE(IsOwnWindow(foreign, L"MorvaneHiddenWindow2"));
    Engine().ownWindow = nullptr;
    Engine().ownClassName.clear();
    EXPECT_TRUE(IsOwnWindow(foreign, L"")) << "both names empty";
}

TEST_F(DiscoveryTest, MatchesCarryTheirEntryInTheOrderOfTheDesktop) {
    const HWND lowest = Window(L"a.txt - Notepad");
    const HWND middle = Window(L"Browser");
    const HWND highest = Window(L"A note");
    static_cast<void>(Window(L"Calculator"));
    Engine().pinList.entries = {
        {.pattern = L""}, {.pattern = L"note"}, {.pattern = L"NOTEPAD"}, {.pattern = L"browser"}};
    const std::vector<MatchedWindow> matched = CollectMatchedWindows();
    ASSERT_EQ(matched.size(), 3U);
    EXPECT_EQ(matched[0].window, highest);
    EXPECT_EQ(matched[0].entryIndex, 1);
    EXPECT_EQ(matched[1].window, middle);
    EXPECT_EQ(matched[1].entryIndex, 3);
    EXPECT_EQ(matched[2].window, lowest);
    EXPECT_EQ(matched[2].entryIndex, 2);
}

TEST_F(DiscoveryTest, EmptyPatternFindsNothing) {
    EXPECT_FALSE(IsFound(L"Alpha", L""));
    EXPECT_TRUE(IsFound(L"Alpha", L"a"));
}

TEST_F(DiscoveryTest, ChildWindowsAreIgnored) {
    const HWND parent = Window(L"Parent");
    const HWND child =
        Other().Create({.title = L"Alpha child", .style = WS_CHILD | WS_CAPTION, .owner = parent});
    ASSERT_EQ(GetParent(child), parent);
    ApplySettings("alpha\n");
    EXPECT_TRUE(Asked(child).empty());
}

TEST_F(DiscoveryTest, OnlyTheFirst511UnitsOfATitleAreSeen) {
    const std::wstring needle = L"needle";
    const auto titleOf = [&needle](std::size_t length) {
        return std::wstring(length - needle.size(), L'x') + needle;
    };
    EXPECT_TRUE(IsFound(titleOf(510), needle));
    EXPECT_TRUE(IsFound(titleOf(511), needle));
    EXPECT_FALSE(IsFound(titleOf(512), needle)) << "its last unit is not read";
    EXPECT_TRUE(IsFound(titleOf(512), L"needl"));
    EXPECT_FALSE(IsFound(titleOf(600), needle));
    EXPECT_TRUE(IsFound(std::wstring(600, L'x'), std::wstring(511, L'X')));
    EXPECT_FALSE(IsFound(std::wstring(600, L'x'), std::wstring(512, L'X')));
}

TEST_F(DiscoveryTest, EveryUnitOfATitleIsMatchedLiterally) {
    struct Case {
        const char* name;
        std::wstring title;
        std::wstring pattern;
        bool found;
    };
    const std::vector<Case> cases = {
        {"lone high surrogate",
         L"a\xD83D"
         L"b",
         L"\xD83D"
         L"B",
         true},
        {"lone low surrogate",
         L"a\xDE00"
         L"b",
         L"\xDE00", true},
        {"half of a pair", L"\xD83D\xDE00", L"\xDE00", true},
        {"other surrogate",
         L"a\xD83D"
         L"b",
         L"\xD83E", false},
        {"U+FFFE",
         L"a\xFFFE"
         L"b",
         L"\xFFFE"
         L"b",
         true},
        {"U+FFFF",
         L"a\xFFFF"
         L"b",
         L"\xFFFF", true},
        {"tab", L"left\tright", L"T\tR", true},
        {"tab is not a blank", L"left\tright", L"left right", false},
        {"right-to-left mark",
         L"a\x200F"
         L"b",
         L"a\x200F"
         L"b",
         true},
        {"marks are not skipped",
         L"a\x200F"
         L"b",
         L"ab", false},
        {"right-to-left override",
         L"\x202E"
         L"cod.exe",
         L"\x202E", true},
        {"ampersand", L"Tom & Jerry", L"m & j", true},
        {"doubled ampersand", L"Tom && Jerry", L"m & j", false},
        {"accents are exact", L"CAF\x00C9", L"caf\x00E9", false},
        {"same accent", L"CAF\x00C9", L"caf\x00C9", true},
        {"no normalisation", L"e\x0301", L"\x00E9", false},
        {"wide letters are exact", L"\xFF21", L"\xFF41", false},
        {"line feed", L"a\nb", L"a\nB", true},
        {"stars are no wildcards", L"alpha beta", L"alpha*beta", false},
        {"star is literal", L"a*b", L"A*", true},
        {"blanks count", L"alpha", L"alpha ", false},
    };
    for (const Case& item : cases) {
        EXPECT_EQ(IsFound(item.title, item.pattern), item.found) << item.name;
    }
}

TEST_F(DiscoveryTest, FiveHundredWindowsAreFoundAndPinnedInOrder) {
    constexpr std::size_t Count = 500;
    std::vector<HWND> windows;
    while (windows.size() < Count) {
        // In batches, so that the other process answers in time on a busy machine.
        const std::vector<HWND> part = Other().CreateMany(
            50, {.title = L"Row ", .style = WS_POPUP, .width = 40, .height = 30});
        windows.insert(windows.end(), part.begin(), part.end());
    }
    ApplySettings("row\n");
    EXPECT_EQ(Engine().pinnedWindows.size(), Count);
    EXPECT_TRUE(std::all_of(windows.begin(), windows.end(), IsTopmost));
    std::sort(windows.begin(), windows.end(), std::greater<>());
    EXPECT_TRUE(PassesOrder(windows));
    RebuildCandidates();
    EXPECT_GE(CandidateList().size(), Count);
    ReleaseAll();
    EXPECT_TRUE(std::none_of(windows.begin(), windows.end(), IsTopmost));
}

}  // namespace
}  // namespace morvane::test
