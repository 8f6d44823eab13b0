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
    const HWND owner = Window(L"Main window");
    const struct {
        const char* name;
        WindowSpec spec;
        bool eligible;
    } cases[] = {
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
    for (const auto& item : cases) {
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

// Which titles are protected depends on the text alone and is tested without windows.
TEST_F(DiscoveryTest, PassPinsOnlyTheNamesakeOfAProtectedDialog) {
    const HWND dialog = Other().Create({.className = L"#32770", .title = L"User Account Control"});
    const HWND notes = Window(L"User Account Control notes");
    ApplySettings("account\n");
    EXPECT_TRUE(Asked(dialog).empty());
    EXPECT_FALSE(IsTopmost(dialog));
    EXPECT_TRUE(IsTopmost(notes));
}

TEST_F(DiscoveryTest, HiddenWindowIsPinnedByTheFirstPassThatSeesItShown) {
    const HWND window = Other().Create({.title = L"Alpha", .visible = false});
    ApplySettings("alpha\n");
    EXPECT_FALSE(IsTopmost(window));
    Other().Show(window, SW_SHOWNOACTIVATE);
    ApplyAll();
    EXPECT_TRUE(IsTopmost(window));
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
    const std::wstring title =
        L"y\xD83Dz\xDE00 \xD83D\xDE00 \xFFFEt\xFFFFt left\tR\nr "
        L"r\x200Fl \x202Emoc Tom && J*y CAF\x00C9 e\x0301 \xFF21";
    const struct {
        const char* name;
        std::wstring pattern;
        bool found;
    } cases[] = {
        {"lone high surrogate", L"Y\xD83DZ", true},
        {"lone low surrogate", L"Z\xDE00 ", true},
        {"half of a pair", L"\xDE00 \xFFFE", true},
        {"other surrogate", L"\xD83E", false},
        {"U+FFFE", L"\xFFFET", true},
        {"U+FFFF", L"\xFFFFT", true},
        {"tab", L"T\tR", true},
        {"tab is not a blank", L"left r", false},
        {"line feed", L"r\nR", true},
        {"right-to-left mark", L"R\x200FL", true},
        {"marks are not skipped", L"rl", false},
        {"right-to-left override", L"\x202EMOC", true},
        {"ampersands", L"m && j", true},
        {"single ampersand", L"m & j", false},
        {"star", L"J*Y", true},
        {"stars are no wildcards", L"c*f", false},
        {"accent", L"caf\x00C9", true},
        {"accents are exact", L"caf\x00E9", false},
        {"no normalisation", L"\x00E9", false},
        {"wide letters are exact", L"\xFF41", false},
        {"blanks count", L"\xFF21 ", false},
    };
    for (const auto& item : cases) {
        EXPECT_EQ(IsFound(title, item.pattern), item.found) << item.name;
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
    EXPECT_EQ(Other().RequestedOrder(windows), windows);
    EXPECT_TRUE(DesktopShows(windows));
    RebuildCandidates();
    EXPECT_GE(CandidateList().size(), Count);
    ReleaseAll();
    EXPECT_TRUE(std::none_of(windows.begin(), windows.end(), IsTopmost));
}

}  // namespace
}  // namespace morvane::test
