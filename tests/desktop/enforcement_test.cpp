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
using Requests = std::vector<std::string>;

class EnforcementTest : public EngineTest {};

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
        ASSERT_TRUE(WriteSettings(pass.lines));
        EXPECT_EQ(ApplyAll(), pass.asked) << pass.name;
    }
}

TEST_F(EnforcementTest, UnmatchedWindowsAreLeftAlone) {
    const HWND matched = Window(L"Editor");
    const HWND other = Window(L"Calculator");
    const HWND topmost = Other().Create({.title = L"Clock", .exStyle = WS_EX_TOPMOST});
    ApplySettings("editor\n");
    EXPECT_TRUE(IsTopmost(matched));
    EXPECT_TRUE(Asked(other).empty());
    EXPECT_FALSE(IsTopmost(other));
    EXPECT_TRUE(Asked(topmost).empty());
    EXPECT_EQ(Engine().pinnedWindows, PinnedWindowSet({matched}));
    ApplySettings("@pinning=0\neditor\n");
    EXPECT_TRUE(Asked(topmost).empty());
    EXPECT_TRUE(IsTopmost(topmost));
}

TEST_F(EnforcementTest, NewWindowsArePinnedByTheNextPass) {
    ApplySettings("editor\n");
    const HWND window = Window(L"Editor");
    EXPECT_FALSE(IsTopmost(window));
    ApplyAll();
    EXPECT_TRUE(IsTopmost(window));
}

TEST_F(EnforcementTest, EarlierEntriesLieAboveLaterOnes) {
    const HWND third = Window(L"Gamma");
    const HWND first = Window(L"Alpha");
    const HWND second = Window(L"Beta");
    const std::vector<HWND> all{first, second, third};
    ASSERT_TRUE(WriteSettings("alpha\nbeta\ngamma\n"));
    EXPECT_TRUE(PassesOrder(all));
    Other().Raise(third);
    ASSERT_TRUE(IsAbove(third, first));
    EXPECT_TRUE(PassesOrder(all));
    ASSERT_TRUE(WriteSettings("gamma\nbeta\nalpha\n"));
    EXPECT_TRUE(PassesOrder({third, second, first}));
}

TEST_F(EnforcementTest, LongestPatternDecidesThePlaceInTheOrder) {
    const HWND text = Window(L"a.txt - Notepad");
    const HWND browser = Window(L"Browser");
    // "note" comes first and matches too, but the window belongs to the last entry.
    ASSERT_TRUE(WriteSettings("note\nbrowser\nnotepad\n"));
    EXPECT_TRUE(PassesOrder({browser, text}));
    EXPECT_TRUE(IsTopmost(text));
}

TEST_F(EnforcementTest, AmongWindowsOfOneEntryTheHighestHandleLiesOnTop) {
    std::vector<HWND> windows = Other().CreateMany(6, {.title = L"Editor "});
    std::sort(windows.begin(), windows.end(), std::greater<>());
    Other().Raise(windows.back());
    ASSERT_TRUE(WriteSettings("editor\n"));
    EXPECT_TRUE(PassesOrder(windows));
    Other().Raise(windows[3]);
    Other().Raise(windows[5]);
    ASSERT_NE(InDesktopOrder(windows), windows);
    EXPECT_TRUE(PassesOrder(windows));
}

TEST_F(EnforcementTest, RaisedLowerPriorityWindowIsPutBackAndKeepsTheFocus) {
    const HWND first = Window(L"Alpha", 100);
    const HWND third = Window(L"Gamma", 300);
    ASSERT_TRUE(WriteSettings("alpha\nbeta\ngamma\n"));
    ASSERT_TRUE(PassesOrder({first, third}));
    ASSERT_TRUE(Other().BringToForeground(first));
    Click({600, 300}, MouseButton::Left);
    ASSERT_TRUE(WaitUntil([&] { return GetForegroundWindow() == third && IsAbove(third, first); }));
    EXPECT_TRUE(PassesOrder({first, third}));
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
    EXPECT_FALSE(WaitUntil([&] { return GetForegroundWindow() != working; }, 200ms));
    EXPECT_TRUE(IsAbove(pinned, working));
}

TEST_F(EnforcementTest, PinnedWindowsReturnAboveForeignTopmostWindows) {
    const HWND pinned = Window(L"Alpha");
    ApplySettings("alpha\n");
    const HWND intruder = Window(L"Clock");
    Other().SetTopmost(intruder, true);
    ASSERT_TRUE(IsAbove(intruder, pinned));
    EXPECT_TRUE(PassesOrder({pinned, intruder}));
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
    struct Case {
        const char* line;
        SIZE size;
        SIZE expected;
    };
    const std::vector<Case> cases = {
        {"size\t0\t600\n", {800, 500}, {800, 600}},   {"size\t0\t600\n", {800, 700}, {800, 700}},
        {"size\t0\t600\n", {800, 600}, {800, 600}},   {"size\t0\t600\n", {800, 599}, {800, 600}},
        {"size\t700\t0\n", {500, 400}, {700, 400}},   {"size\t700\t0\n", {701, 400}, {701, 400}},
        {"size\t700\t600\n", {500, 400}, {700, 600}}, {"size\t700\t600\n", {800, 400}, {800, 600}},
        {"size\t700\t600\n", {500, 650}, {700, 650}}, {"size\t700\t600\n", {800, 650}, {800, 650}},
        {"size 700 600\n", {500, 400}, {700, 600}},   {"size\n", {300, 200}, {300, 200}},
        {"size\t0\t0\n", {300, 200}, {300, 200}},
    };
    const HWND window = Window(L"Size");
    for (const Case& item : cases) {
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

TEST_F(EnforcementTest, LongestPatternDecidesTheSize) {
    const HWND window = Window(L"a.txt - Notepad");
    ApplySettings("note\t900\t700\nnotepad\t500\t0\n");
    EXPECT_EQ(WindowSize(window).cx, 500);
    EXPECT_EQ(WindowSize(window).cy, 300);
}

TEST_F(EnforcementTest, MinimisedWindowIsPinnedAtOnceAndResizedOnceRestored) {
    const HWND window = Window(L"Alpha");
    Other().Minimise(window);
    Other().ForgetRecords(window);
    ApplySettings("alpha\t600\t500\n");
    EXPECT_EQ(Asked(window), Requests({TopmostRequest}));
    EXPECT_TRUE(IsTopmost(window));
    EXPECT_NE(IsIconic(window), FALSE);
    Other().Restore(window);
    EXPECT_TRUE(IsTopmost(window));
    EXPECT_EQ(WindowSize(window).cx, 400);
    ApplyAll();
    EXPECT_EQ(WindowSize(window).cx, 600);
    EXPECT_EQ(WindowSize(window).cy, 500);
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

TEST_F(EnforcementTest, RestoredWindowThatIsLargeEnoughIsNotResized) {
    const HWND window = Window(L"Alpha");
    Other().Minimise(window);
    ApplySettings("alpha\t300\t200\n");
    Other().Restore(window);
    Other().ForgetRecords(window);
    ApplyAll();
    EXPECT_EQ(Asked(window), Requests({TopmostRequest}));
    EXPECT_EQ(WindowSize(window).cx, 400);
}

TEST_F(EnforcementTest, DyingWindowsDoNotDisturbThePass) {
    const HWND dying = Window(L"Alpha dying");
    const HWND other = Window(L"Alpha living");
    const HWND grown = Window(L"Beta dying");
    // The second window dies inside the request to grow, before the topmost request.
    Other().DieOnRequest(dying, 1);
    Other().DieOnRequest(grown, 1);
    ApplySettings("alpha\nbeta\t600\t500\n");
    EXPECT_EQ(IsWindow(dying), FALSE);
    EXPECT_EQ(IsWindow(grown), FALSE);
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
    ASSERT_TRUE(WriteSettings("first\nalpha\t600\t500\n"));
    const auto start = std::chrono::steady_clock::now();
    Other().Hang(HangTime);
    ApplyAll();
    EXPECT_GE(std::chrono::steady_clock::now() - start, HangTime);
    ASSERT_EQ(Asked(hung), Requests({GrowRequest(100, 100, 600, 500), TopmostRequest}));
    EXPECT_TRUE(IsTopmost(hung));
    EXPECT_TRUE(IsTopmost(last));
    ASSERT_EQ(healthy.Requests(last).size(), 1U);
    EXPECT_GE(healthy.Requests(last)[0].tickCount, Other().Requests(hung)[1].tickCount);
    EXPECT_TRUE(PassesOrder({last, hung}));
}

TEST_F(EnforcementTest, EveryPassRereadsTheSettingsFile) {
    const HWND alpha = Window(L"Alpha");
    const HWND beta = Window(L"Beta");
    ApplySettings("alpha\n");
    EXPECT_FALSE(IsTopmost(beta));
    ApplySettings("beta\r\n# alpha\r\n");
    EXPECT_TRUE(IsTopmost(beta));
    EXPECT_EQ(Engine().pinnedWindows, PinnedWindowSet({beta}));
    ASSERT_EQ(Engine().pinList.entries.size(), 1U);
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
    ASSERT_TRUE(WriteSettings("alpha\n"));
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
    Other().ForgetRecords(window);
    EXPECT_FALSE(ApplyToWindow(window, true));
    EXPECT_FALSE(ApplyToWindow(nullptr, true));
    EXPECT_TRUE(Asked(window).empty());
    EXPECT_TRUE(Engine().pinnedWindows.empty());
}

}  // namespace
}  // namespace morvane::test
