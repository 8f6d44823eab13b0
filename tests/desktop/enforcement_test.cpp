// One pass over real windows of another process: the requests each gets, and where it ends up.

#include "pin/enforcement.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>

#include "desktop/engine_fixture.h"
#include "pin/engine.h"
#include "support/import_patch.h"
#include "support/test_environment.h"
#include "support/user_input.h"
#include "support/wait.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

using namespace std::chrono_literals;

using EnforcementTest = EngineTest;

TEST_F(EnforcementTest, EveryPassAsksAMatchedWindowOnceToBeTopmost) {
    const HWND window = Window(L"Notes - Editor");
    ApplySettings("editor\n");
    EXPECT_EQ(Asked(window), Requests({TopmostRequest}));
    EXPECT_TRUE(IsTopmost(window));
    EXPECT_EQ(Engine().pinnedWindows, PinnedWindowSet({window}));
    ApplyAll();
    EXPECT_EQ(Asked(window), Requests({TopmostRequest, TopmostRequest}));
    EXPECT_EQ(Engine().pinnedWindows.size(), 1U);
}

TEST_F(EnforcementTest, PassReportsWhetherItAskedAnyWindowToBeTopmost) {
    const struct {
        const char* name;
        const char* lines;
        bool asked;
    } passes[] = {
        {"no entry", "", false},
        {"no window", "nobody\n", false},
        {"one window", "editor\n", true},
        {"the same again", "editor\n", true},
        {"only a release", "@pinning=0\neditor\n", false},
        {"nothing to release", "@pinning=0\neditor\n", false},
        {"two windows", "editor\nclock\n", true},
        {"entry gone", "nobody\n", false},
    };
    static_cast<void>(Window(L"Editor"));
    static_cast<void>(Window(L"Clock"));
    for (const auto& pass : passes) {
        WriteSettings(pass.lines);
        EXPECT_EQ(ApplyAll(), pass.asked) << pass.name;
    }
}

TEST_F(EnforcementTest, UnmatchedWindowsAreLeftAlone) {
    const HWND matched = Window(L"Editor");
    const HWND other = Window(L"Calculator");
    const HWND topmost = Other().Create({.title = L"Clock", .exStyle = WS_EX_TOPMOST});
    for (const char* const lines : {"editor\n", "@pinning=0\neditor\n"}) {
        ApplySettings(lines);
        EXPECT_TRUE(Asked(other).empty()) << lines;
        EXPECT_FALSE(IsTopmost(other)) << lines;
        EXPECT_TRUE(Asked(topmost).empty()) << lines;
        EXPECT_TRUE(IsTopmost(topmost)) << lines;
    }
    EXPECT_EQ(Asked(matched).size(), 2U);
}

TEST_F(EnforcementTest, EarlierEntriesLieAboveLaterOnes) {
    const HWND third = Window(L"Gamma");
    const HWND first = Window(L"Alpha");
    const HWND second = Window(L"Beta");
    const std::vector<HWND> all{first, second, third};
    WriteSettings("alpha\nbeta\ngamma\n");
    EXPECT_EQ(OrderOfAPass(all), all);
    EXPECT_TRUE(DesktopShows(all));
    Other().Raise(third);
    ASSERT_TRUE(IsAbove(third, first));
    EXPECT_EQ(OrderOfAPass(all), all);
    EXPECT_TRUE(DesktopShows(all));
    WriteSettings("gamma\nbeta\nalpha\n");
    const std::vector<HWND> reversed{third, second, first};
    EXPECT_EQ(OrderOfAPass(all), reversed);
    EXPECT_TRUE(DesktopShows(reversed));
}

TEST_F(EnforcementTest, LongestPatternDecidesThePlaceAndTheSize) {
    const HWND text = Window(L"a.txt - Notepad");
    const HWND browser = Window(L"Browser");
    // "note" comes first and matches too, but the window belongs to the last entry.
    WriteSettings("note\t900\t700\nbrowser\nnotepad\t500\t0\n");
    EXPECT_EQ(OrderOfAPass({text, browser}), std::vector<HWND>({browser, text}));
    EXPECT_EQ(WindowSize(text).cx, 500);
    EXPECT_EQ(WindowSize(text).cy, 300);
}

TEST_F(EnforcementTest, AmongWindowsOfOneEntryTheHighestHandleLiesOnTop) {
    std::vector<HWND> windows = Other().CreateMany(6, {.title = L"Editor "});
    std::sort(windows.begin(), windows.end(), std::greater<>());
    WriteSettings("editor\n");
    for (const std::size_t raised : {5U, 3U}) {
        Other().Raise(windows[raised]);
        ASSERT_NE(InDesktopOrder(windows), windows);
        EXPECT_EQ(OrderOfAPass(windows), windows);
        EXPECT_TRUE(DesktopShows(windows));
    }
}

TEST_F(EnforcementTest, RaisedLowerPriorityWindowIsPutBackAndKeepsTheFocus) {
    const HWND first = Window(L"Alpha", 100);
    const HWND third = Window(L"Gamma", 300);
    ApplySettings("alpha\nbeta\ngamma\n");
    ASSERT_TRUE(Other().BringToForeground(first));
    Click({600, 300}, MouseButton::Left);
    ASSERT_TRUE(WaitUntil([&] { return GetForegroundWindow() == third && IsAbove(third, first); }));
    const std::vector<HWND> order{first, third};
    EXPECT_EQ(OrderOfAPass(order), order);
    EXPECT_TRUE(DesktopShows(order));
    EXPECT_EQ(GetForegroundWindow(), third);
}

TEST_F(EnforcementTest, PassDoesNotTakeTheFocusFromAnOrdinaryWindow) {
    const HWND pinned = Window(L"Alpha");
    const HWND working = Window(L"Document");
    ASSERT_TRUE(Other().BringToForeground(working));
    ApplySettings("alpha\t500\t400\n");
    ASSERT_TRUE(IsTopmost(pinned));
    EXPECT_EQ(WindowSize(pinned).cx, 500);
    EXPECT_EQ(GetForegroundWindow(), working);
    // Its process handles an activation before anything that comes later.
    Other().SetTitle(pinned, L"Alpha 2");
    EXPECT_EQ(GetForegroundWindow(), working);
    EXPECT_TRUE(IsAbove(pinned, working));
}

TEST_F(EnforcementTest, PinnedWindowsReturnAboveForeignTopmostWindows) {
    const HWND pinned = Window(L"Alpha");
    ApplySettings("alpha\n");
    const HWND intruder = Window(L"Clock");
    Other().SetTopmost(intruder, true);
    ASSERT_TRUE(IsAbove(intruder, pinned));
    const std::vector<HWND> order{pinned, intruder};
    EXPECT_EQ(OrderOfAPass(order), std::vector<HWND>{pinned});
    EXPECT_TRUE(DesktopShows(order));
    EXPECT_TRUE(IsTopmost(intruder));
}

TEST_F(EnforcementTest, TopmostStateThatTheWindowGaveUpIsRestored) {
    const HWND window = Window(L"Alpha");
    ApplySettings("alpha\n");
    Other().SetTopmost(window, false);
    ASSERT_FALSE(IsTopmost(window));
    ApplyAll();
    EXPECT_TRUE(IsTopmost(window));
}

TEST_F(EnforcementTest, WindowsGrowToTheMinimumSizeAndNeverShrink) {
    const struct {
        const char* line;
        SIZE size;
        SIZE expected;
    } cases[] = {
        {"size\t0\t600\n", {800, 599}, {800, 600}},   {"size\t0\t600\n", {800, 600}, {800, 600}},
        {"size\t700\t0\n", {500, 400}, {700, 400}},   {"size\t700\t0\n", {701, 400}, {701, 400}},
        {"size\t700\t600\n", {500, 400}, {700, 600}}, {"size\t700\t600\n", {800, 400}, {800, 600}},
        {"size\t700\t600\n", {500, 650}, {700, 650}}, {"size\t700\t600\n", {800, 650}, {800, 650}},
        {"size 700 600\n", {500, 400}, {700, 600}},   {"size\n", {300, 200}, {300, 200}},
        {"size\t0\t0\n", {300, 200}, {300, 200}},
    };
    const HWND window = Window(L"Size");
    for (const auto& item : cases) {
        SCOPED_TRACE(std::string(item.line) + std::to_string(item.size.cx) + "x" +
                     std::to_string(item.size.cy));
        Other().Place(window, 100, 110, item.size.cx, item.size.cy);
        Other().ForgetRecords(window);
        ApplySettings(item.line);
        const bool grows = item.size.cx != item.expected.cx || item.size.cy != item.expected.cy;
        const Requests expected =
            grows ? Requests{GrowRequest(100, 110, item.expected.cx, item.expected.cy),
                             TopmostRequest}
                  : Requests{TopmostRequest};
        EXPECT_EQ(Asked(window), expected);
        EXPECT_EQ(WindowRect(window).left, 100);
        EXPECT_EQ(WindowRect(window).top, 110);
        EXPECT_EQ(WindowSize(window).cx, item.expected.cx);
        EXPECT_EQ(WindowSize(window).cy, item.expected.cy);
    }
}

TEST_F(EnforcementTest, MinimisedWindowIsPinnedAtOnceAndResizedOnceRestored) {
    const HWND window = Window(L"Alpha");
    const HWND large = Window(L"Beta");
    for (const HWND minimised : {window, large}) {
        Other().Minimise(minimised);
        Other().ForgetRecords(minimised);
    }
    ApplySettings("alpha\t600\t500\nbeta\t300\t200\n");
    for (const HWND minimised : {window, large}) {
        EXPECT_EQ(Asked(minimised), Requests({TopmostRequest}));
        EXPECT_TRUE(IsTopmost(minimised));
        EXPECT_NE(IsIconic(minimised), FALSE);
        Other().Restore(minimised);
        EXPECT_TRUE(IsTopmost(minimised));
        EXPECT_EQ(WindowSize(minimised).cx, 400);
        Other().ForgetRecords(minimised);
    }
    ApplyAll();
    EXPECT_EQ(Asked(window), Requests({GrowRequest(100, 100, 600, 500), TopmostRequest}));
    EXPECT_EQ(Asked(large), Requests({TopmostRequest})) << "large enough";
}

TEST_F(EnforcementTest, WindowOfUnknownSizeIsPinnedWithoutBeingResized) {
    const HWND window = Window(L"Alpha");
    {
        const auto patch = Refuse<decltype(&GetWindowRect), FALSE>("GetWindowRect");
        ApplySettings("alpha\t600\t500\n");
    }
    EXPECT_EQ(Asked(window), Requests({TopmostRequest}));
    EXPECT_EQ(Engine().pinnedWindows, PinnedWindowSet({window}));
    ApplyAll();
    EXPECT_EQ(WindowSize(window).cx, 600) << "as soon as its size is known";
}

TEST_F(EnforcementTest, WindowsThatDieInsideARequestDoNotDisturbThePass) {
    const HWND dying = Window(L"Alpha dying");
    const HWND other = Window(L"Alpha living");
    // Dies inside the request to grow, before the topmost request.
    const HWND grown = Window(L"Beta dying");
    Other().DieOnRequest(dying, 1);
    Other().DieOnRequest(grown, 1);
    ApplySettings("alpha\nbeta\t600\t500\n");
    EXPECT_EQ(IsWindow(dying), FALSE);
    EXPECT_TRUE(IsTopmost(other));
    // Its destruction is recorded after the request that it died in.
    const Requests last = Asked(grown);
    ASSERT_FALSE(last.empty());
    EXPECT_EQ(last.front(), GrowRequest(100, 100, 600, 500));
    EXPECT_EQ(std::count(last.begin(), last.end(), TopmostRequest), 0);
    ApplyAll();
    EXPECT_EQ(Engine().pinnedWindows, PinnedWindowSet({other}));
}

TEST_F(EnforcementTest, RefusingWindowIsRememberedAndAskedAgain) {
    const HWND window = Window(L"Alpha");
    Other().Refuse(window);
    ApplySettings("alpha\n");
    EXPECT_FALSE(IsTopmost(window));
    EXPECT_EQ(Engine().pinnedWindows.count(window), 1U);
    EXPECT_TRUE(ApplyAll());
    EXPECT_EQ(Asked(window), Requests({TopmostRequest, TopmostRequest}));
    Other().Refuse(window, false);
    ApplyAll();
    EXPECT_TRUE(IsTopmost(window));
}

TEST_F(EnforcementTest, PassWaitsForAHungWindowAndThenFinishes) {
    Actor healthy;
    const HWND hung = Window(L"Alpha hung");
    const HWND last = healthy.Create({.title = L"First of all"});
    constexpr auto HangTime = 800ms;
    WriteSettings("first\nalpha\t600\t500\n");
    const auto start = std::chrono::steady_clock::now();
    Other().Hang(HangTime);
    ApplyAll();
    EXPECT_GE(std::chrono::steady_clock::now() - start, HangTime);
    ASSERT_EQ(Asked(hung), Requests({GrowRequest(100, 100, 600, 500), TopmostRequest}));
    EXPECT_TRUE(IsTopmost(hung));
    EXPECT_TRUE(IsTopmost(last));
    ASSERT_EQ(healthy.Requests(last).size(), 1U);
    EXPECT_GT(healthy.Requests(last)[0].counter, Other().Requests(hung)[1].counter);
}

TEST_F(EnforcementTest, EveryPassRereadsTheSettingsFile) {
    const HWND alpha = Window(L"Alpha");
    const HWND beta = Window(L"Beta");
    ApplySettings("alpha\n");
    EXPECT_FALSE(IsTopmost(beta));
    ApplySettings("beta\r\n# alpha\r\n");
    EXPECT_TRUE(IsTopmost(beta));
    // Neither the file nor its time changes; the list in memory must not matter.
    Engine().pinList = {.pinning = false, .entries = {{.pattern = L"alpha"}}};
    ApplyAll();
    EXPECT_EQ(Engine().pinnedWindows, PinnedWindowSet({beta}));
    ASSERT_NE(DeleteFileW(SettingsPath().c_str()), FALSE);
    ApplyAll();
    EXPECT_TRUE(Engine().pinList.pinning);
    EXPECT_TRUE(Engine().pinList.entries.empty());
    EXPECT_TRUE(Engine().pinnedWindows.empty());
    EXPECT_FALSE(ReadSettings().has_value());
    EXPECT_EQ(Asked(alpha), Requests({TopmostRequest}));
}

TEST_F(EnforcementTest, WithoutASettingsPathEveryPassStartsFromTheDefaultList) {
    const HWND window = Window(L"Alpha");
    WriteSettings("alpha\n");
    Engine().settingsPath.clear();
    Engine().pinList = {.pinning = false, .entries = {{.pattern = L"alpha"}}};
    ApplyAll();
    EXPECT_TRUE(Engine().pinList.pinning);
    EXPECT_TRUE(Engine().pinList.entries.empty());
    EXPECT_TRUE(Asked(window).empty());
    EXPECT_TRUE(Engine().pinnedWindows.empty());
}

TEST_F(EnforcementTest, UnforcedRequestIsSkippedForARememberedTopmostWindow) {
    const HWND window = Window(L"Alpha");
    EXPECT_TRUE(ApplyToWindow(window, false));
    EXPECT_EQ(Asked(window), Requests({TopmostRequest})) << "not remembered yet";
    EXPECT_FALSE(ApplyToWindow(window, false));
    EXPECT_EQ(Asked(window).size(), 1U) << "remembered and topmost";
    EXPECT_TRUE(ApplyToWindow(window, true));
    EXPECT_EQ(Asked(window).size(), 2U) << "forced";
    Other().SetTopmost(window, false);
    Other().ForgetRecords(window);
    EXPECT_TRUE(ApplyToWindow(window, false));
    EXPECT_EQ(Asked(window), Requests({TopmostRequest})) << "remembered, no longer topmost";
    Engine().pinnedWindows.clear();
    EXPECT_TRUE(ApplyToWindow(window, false));
    EXPECT_EQ(Asked(window).size(), 2U) << "topmost, not remembered";
}

TEST_F(EnforcementTest, WindowIsPinnedEvenIfNoEntryIdentifiesItAnyMore) {
    const HWND window = Window(L"Alpha");
    const HWND untitled = Window(L"");
    Engine().pinList.entries = {{.pattern = L"beta", .minWidth = 900, .minHeight = 700}};
    ApplyToWindow(window, true);
    ApplyToWindow(untitled, true);
    EXPECT_EQ(Asked(window), Requests({TopmostRequest}));
    EXPECT_EQ(Asked(untitled), Requests({TopmostRequest}));
    EXPECT_EQ(Engine().pinnedWindows, PinnedWindowSet({window, untitled}));
}

TEST_F(EnforcementTest, DeadWindowIsNeitherAskedNorRemembered) {
    const HWND window = Window(L"Alpha");
    Other().Destroy(window);
    EXPECT_FALSE(ApplyToWindow(window, true));
    EXPECT_FALSE(ApplyToWindow(nullptr, true));
    EXPECT_TRUE(Engine().pinnedWindows.empty());
}

}  // namespace
}  // namespace morvane::test
