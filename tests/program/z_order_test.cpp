// The order of windows as the user sees it on the screen.

#include <algorithm>

#include "program/scene.h"
#include "support/screen.h"
#include "support/user_input.h"

namespace morvane::test {
namespace {

constexpr COLORREF Red = RGB(0xC0, 0x20, 0x10);
constexpr COLORREF Green = RGB(0x10, 0xC0, 0x20);
constexpr COLORREF Blue = RGB(0x10, 0x20, 0xC0);

using ZOrderTest = ProgramTest;

// Three places of 400 by 300 pixels that overlap at Shared, each with a point of its own.
constexpr POINT Shared{330, 330};
constexpr POINT OfSecond{560, 400};

HWND CreateAt(Actor& actor, const wchar_t* title, int offset, COLORREF colour) {
    return actor.Create({.title = title,
                         .x = 100 + offset,
                         .y = 100 + offset,
                         .width = 400,
                         .height = 300,
                         .colour = colour});
}

bool Shows(POINT at, COLORREF colour) {
    return WaitUntil([=] { return PixelAt(at) == colour; });
}

bool Received(Actor& actor, HWND window, UINT message) {
    return WaitUntil([&] {
        const std::vector<InputEvent> events = actor.Input(window);
        return std::any_of(events.begin(), events.end(),
                           [message](const InputEvent& event) { return event.message == message; });
    });
}

TEST_F(ZOrderTest, PinnedWindowStaysAboveAClickedOrdinaryOne) {
    ASSERT_TRUE(WriteSettings("Pinned\n"));
    Actor actor;
    const HWND pinned = CreateAt(actor, L"Pinned", 0, Red);
    const HWND ordinary = CreateAt(actor, L"Ordinary", 150, Blue);
    ASSERT_TRUE(actor.BringToForeground(ordinary));
    ASSERT_TRUE(Shows(Shared, Blue));
    const Program program = StartedProgram();
    EXPECT_TRUE(BecomesTopmost(pinned));
    EXPECT_TRUE(Shows(Shared, Red));
    Click(OfSecond, MouseButton::Left);
    EXPECT_TRUE(WaitUntil([&] { return GetForegroundWindow() == ordinary; }));
    EXPECT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_TRUE(IsAbove(pinned, ordinary));
    EXPECT_TRUE(Shows(Shared, Red));
    EXPECT_EQ(GetForegroundWindow(), ordinary);
}

TEST_F(ZOrderTest, EarlierEntriesLieAboveLaterOnes) {
    Actor actor;
    const HWND a = CreateAt(actor, L"Window A", 0, Red);
    const HWND b = CreateAt(actor, L"Window B", 50, Green);
    const HWND c = CreateAt(actor, L"Window C", 100, Blue);
    struct Case {
        const char* lines;
        std::vector<HWND> highestFirst;
        COLORREF colour;
    };
    const Case cases[] = {
        {"Window A\nWindow B\nWindow C\n", {a, b, c}, Red},
        {"Window C\nWindow B\nWindow A\n", {c, b, a}, Blue},
        {"Window B\nnobody\nWindow A\nWindow C\n", {b, a, c}, Green},
        {"Window C\nWindow A\nWindow B\n", {c, a, b}, Blue},
        // The longest pattern identifies a window, wherever it stands.
        {"Window\nWindow A\n", {std::max(b, c), std::min(b, c), a}, c > b ? Blue : Green},
        {"Window A\nWindow\n", {a, std::max(b, c), std::min(b, c)}, Red},
    };
    ASSERT_TRUE(WriteSettings(""));
    const Program program = StartedProgram();
    for (const Case& item : cases) {
        ASSERT_TRUE(EditSettings(item.lines)) << item.lines;
        EXPECT_TRUE(WaitUntil([&] {
            return IsTopmost(item.highestFirst[2]) &&
                   IsAbove(item.highestFirst[0], item.highestFirst[1]) &&
                   IsAbove(item.highestFirst[1], item.highestFirst[2]);
        })) << item.lines;
        EXPECT_TRUE(Shows(Shared, item.colour)) << item.lines;
    }
}

TEST_F(ZOrderTest, ClickOnALowerEntryIsUndoneWithoutTakingTheKeyboard) {
    ASSERT_TRUE(WriteSettings("First\nnobody\nSecond\n"));
    Actor actor;
    const HWND first = CreateAt(actor, L"First", 0, Red);
    const HWND second = CreateAt(actor, L"Second", 150, Blue);
    const Program program = StartedProgram();
    ASSERT_TRUE(WaitUntil([&] { return IsTopmost(second) && IsAbove(first, second); }));
    ASSERT_TRUE(actor.BringToForeground(first));
    actor.ForgetRecords(second);
    Click(OfSecond, MouseButton::Left);
    ASSERT_TRUE(Received(actor, second, WM_LBUTTONUP));
    ASSERT_TRUE(WaitUntil([&] { return GetForegroundWindow() == second; }));
    // Activation alone does not raise a window on every desktop, so raise it explicitly.
    const std::size_t before = TopmostRequests(actor, first);
    actor.Raise(second);
    EXPECT_TRUE(WaitUntil([&] { return TopmostRequests(actor, first) > before; }));
    EXPECT_TRUE(WaitUntil([&] { return IsAbove(first, second); }));
    EXPECT_TRUE(Shows(Shared, Red));
    EXPECT_EQ(GetForegroundWindow(), second);
    TapKey('M');
    EXPECT_TRUE(Received(actor, second, WM_KEYDOWN));
    EXPECT_TRUE(actor.Input(first).empty());
}

TEST_F(ZOrderTest, ForeignTopmostWindowComesUpOnlyUntilTheNextPass) {
    ASSERT_TRUE(WriteSettings("Pinned\n"));
    Actor actor;
    const HWND pinned = CreateAt(actor, L"Pinned", 0, Red);
    const HWND foreign = CreateAt(actor, L"Foreign", 50, Blue);
    actor.SetTopmost(foreign, true);
    const Program program = StartedProgram();
    ASSERT_TRUE(WaitUntil([&] { return IsAbove(pinned, foreign); }));
    actor.Raise(foreign);
    EXPECT_TRUE(WaitUntil([&] { return IsAbove(pinned, foreign); }));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_TRUE(IsTopmost(foreign)) << "nobody's pattern, so left alone";
}

TEST_F(ZOrderTest, RequestsMoveAndActivateNothing) {
    ASSERT_TRUE(WriteSettings("Pinned\n"));
    Actor actor;
    const HWND pinned = CreateAt(actor, L"Pinned", 0, Red);
    actor.ForgetRecords(pinned);
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(pinned));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    const std::vector<PositionRequest> requests = actor.Requests(pinned);
    ASSERT_GE(requests.size(), 2U);
    for (const PositionRequest& request : requests) {
        EXPECT_EQ(request.flags, 0x53U);
    }
    EXPECT_EQ(requests.front().insertAfter, HWND_TOPMOST);
    EXPECT_EQ(requests.back().insertAfter, HWND_NOTOPMOST);
}

TEST_F(ZOrderTest, WindowsThatTheListDoesNotConcernStayOrdinary) {
    ASSERT_TRUE(WriteSettings("Sentinel\naccount\nHidden\nOwned\n"));
    Actor actor;
    const HWND owner = actor.Create({.title = L"Some owner"});
    const HWND owned = actor.Create({.title = L"Owned", .owner = owner});
    const HWND hidden = actor.Create({.title = L"Hidden", .visible = false});
    const HWND dialog = actor.Create({.className = L"#32770", .title = L"User Account Control"});
    const HWND notes = actor.Create({.title = L"User Account Control notes"});
    const HWND untitled = actor.Create({.title = L""});
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    ASSERT_TRUE(sentinel.WaitForPass(program));
    EXPECT_FALSE(IsTopmost(owned));
    EXPECT_FALSE(IsTopmost(hidden));
    EXPECT_FALSE(IsTopmost(dialog));
    EXPECT_FALSE(IsTopmost(untitled));
    EXPECT_TRUE(IsTopmost(notes));
    actor.Show(hidden, SW_SHOWNOACTIVATE);
    EXPECT_TRUE(BecomesTopmost(hidden));
}

TEST_F(ZOrderTest, WindowWhoseTitleStopsMatchingIsLeftAsItIs) {
    ASSERT_TRUE(EditSettings("Sentinel\nTarget\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(target));
    actor.SetTitle(target, L"Renamed");
    ASSERT_TRUE(sentinel.WaitForPass(program));
    EXPECT_TRUE(IsTopmost(target));
    ASSERT_TRUE(EditSettings("@pinning=0\nSentinel\n"));
    EXPECT_TRUE(BecomesOrdinary(sentinel.Window()));
    EXPECT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_TRUE(IsTopmost(target));
}

TEST_F(ZOrderTest, SwitchingOffAlsoReleasesWindowsThatWereTopmostBefore) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    actor.SetTopmost(target, true);
    const Program program = StartedProgram();
    ASSERT_TRUE(WaitUntil([&] { return TopmostRequests(actor, target) >= 2; }));
    EXPECT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_TRUE(BecomesOrdinary(target));
}

}  // namespace
}  // namespace morvane::test
