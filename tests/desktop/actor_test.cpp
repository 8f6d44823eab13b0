// Tests of the harness: foreign windows behave as the other tests expect.

#include "support/actor.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <set>
#include <thread>
#include <vector>

#include "support/wait.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

using namespace std::chrono_literals;

constexpr UINT PinFlags = SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE | SWP_SHOWWINDOW;
constexpr UINT GrowFlags = SWP_NOZORDER | SWP_NOACTIVATE | SWP_SHOWWINDOW;

void Pin(HWND window) {
    SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, PinFlags);
}

bool HasSystemMenu(HWND window) {
    return (GetWindowLongPtrW(window, GWL_STYLE) & WS_SYSMENU) != 0;
}

bool IsToolWindow(HWND window) {
    return (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOOLWINDOW) != 0;
}

TEST(ActorTest, WindowBelongsToAnotherProcessAndIsAsRequested) {
    Actor actor;
    const HWND window =
        actor.Create({.title = L"Foreign one", .x = 120, .y = 90, .width = 333, .height = 222});
    EXPECT_NE(ProcessOf(window), GetCurrentProcessId());
    EXPECT_EQ(ProcessOf(window), actor.ProcessId());
    EXPECT_EQ(WindowTitle(window), L"Foreign one");
    EXPECT_EQ(WindowClass(window), L"MorvaneTestWindow");
    EXPECT_NE(IsWindowVisible(window), FALSE);
    EXPECT_EQ(WindowRect(window).left, 120);
    EXPECT_EQ(WindowRect(window).top, 90);
    EXPECT_EQ(WindowSize(window).cx, 333);
    EXPECT_EQ(WindowSize(window).cy, 222);
    EXPECT_FALSE(IsTopmost(window));
    EXPECT_TRUE(actor.Requests(window).empty());
}

TEST(ActorTest, HiddenOwnedAndToolWindowsAreAsRequested) {
    Actor actor;
    const HWND owner = actor.Create({.title = L"Owner"});
    const HWND owned = actor.Create({.title = L"Owned", .style = WS_CAPTION, .owner = owner});
    const HWND hidden = actor.Create({.title = L"Hidden", .visible = false});
    const HWND tool = actor.Create({.title = L"Tool", .exStyle = WS_EX_TOOLWINDOW});
    EXPECT_EQ(GetWindow(owned, GW_OWNER), owner);
    EXPECT_EQ(GetWindow(owner, GW_OWNER), nullptr);
    EXPECT_FALSE(HasSystemMenu(owned));
    EXPECT_EQ(IsWindowVisible(hidden), FALSE);
    EXPECT_TRUE(HasSystemMenu(owner));
    EXPECT_TRUE(IsToolWindow(tool));
}

TEST(ActorTest, AnyWindowClassCanBeUsedIncludingTheStandardDialog) {
    Actor actor;
    for (const wchar_t* name : {L"#32770", L"Edit", L"My own class", L"MorvaneHiddenWindow"}) {
        const HWND window = actor.Create({.className = name, .title = L"Class test"});
        EXPECT_EQ(WindowClass(window), name);
        EXPECT_NE(IsWindowVisible(window), FALSE);
    }
}

TEST(ActorTest, TitlesKeepEveryUnit) {
    struct Case {
        const char* name;
        std::wstring title;
    };
    const std::vector<Case> cases = {
        {"plain", L"Plain title"},
        {"tab and quotes", L"tab\there \"quoted\""},
        {"lone high surrogate", std::wstring(L"a\xD83D") + L"z"},
        {"lone low surrogate", std::wstring(L"a\xDE00") + L"z"},
        {"U+FFFE and U+FFFF", L"\xFFFE\xFFFF"},
        {"no-break and line separators", L"\x00A0x\x2028y\x2029"},
        {"longer than the usual buffers", std::wstring(3000, L'x') + L"end"},
        {"empty", L""},
    };
    Actor actor;
    const HWND window = actor.Create({.title = L"before"});
    for (const Case& item : cases) {
        actor.SetTitle(window, item.title);
        EXPECT_EQ(WindowTitle(window), item.title) << item.name;
        const HWND created = actor.Create({.title = item.title});
        EXPECT_EQ(WindowTitle(created), item.title) << item.name << ", set at creation";
    }
}

TEST(ActorTest, RequestsAreRecordedExactly) {
    struct Case {
        const char* name;
        HWND insertAfter;
        RECT target;  // left, top, width, height
        UINT flags;
    };
    const std::vector<Case> cases = {
        {"topmost", HWND_TOPMOST, {0, 0, 0, 0}, PinFlags},
        {"not topmost", HWND_NOTOPMOST, {0, 0, 0, 0}, PinFlags},
        {"grow", nullptr, {100, 100, 800, 600}, GrowFlags},
    };
    Actor actor;
    const HWND window = actor.Create({.title = L"Recorded"});
    for (const Case& item : cases) {
        actor.ForgetRecords(window);
        const ULONGLONG before = GetTickCount64();
        SetWindowPos(window, item.insertAfter, item.target.left, item.target.top, item.target.right,
                     item.target.bottom, item.flags);
        const std::vector<PositionRequest> requests = actor.Requests(window);
        ASSERT_EQ(requests.size(), 1U) << item.name;
        EXPECT_EQ(requests[0].insertAfter, item.insertAfter) << item.name;
        EXPECT_EQ(requests[0].flags, item.flags) << item.name;
        EXPECT_EQ(requests[0].x, item.target.left) << item.name;
        EXPECT_EQ(requests[0].y, item.target.top) << item.name;
        EXPECT_EQ(requests[0].cx, item.target.right) << item.name;
        EXPECT_EQ(requests[0].cy, item.target.bottom) << item.name;
        EXPECT_GE(requests[0].tickCount, before) << item.name;
        EXPECT_LE(requests[0].tickCount, GetTickCount64()) << item.name;
    }
    EXPECT_EQ(PinFlags, 0x53U);
    EXPECT_EQ(GrowFlags, 0x54U);
    EXPECT_EQ(WindowSize(window).cx, 800);
    EXPECT_EQ(WindowSize(window).cy, 600);
}

TEST(ActorTest, OrderOfTopmostWindowsIsObserved) {
    Actor actor;
    const HWND first = actor.Create({.title = L"First"});
    const HWND second = actor.Create({.title = L"Second"});
    const HWND ordinary = actor.Create({.title = L"Ordinary"});
    EXPECT_TRUE(IsAbove(ordinary, first));
    Pin(first);
    Pin(second);
    EXPECT_TRUE(IsTopmost(first));
    EXPECT_TRUE(IsTopmost(second));
    EXPECT_FALSE(IsTopmost(ordinary));
    EXPECT_TRUE(IsAbove(second, first));
    EXPECT_FALSE(IsAbove(first, second));
    EXPECT_TRUE(IsAbove(first, ordinary));
    actor.Raise(first);
    EXPECT_TRUE(IsAbove(first, second));
    actor.SetTopmost(first, false);
    EXPECT_FALSE(IsTopmost(first));
    actor.SetTopmost(ordinary, true);
    EXPECT_TRUE(IsTopmost(ordinary));
}

TEST(ActorTest, RefusingWindowIsAskedButStaysOrdinary) {
    Actor actor;
    const HWND window = actor.Create({.title = L"Refusing"});
    actor.Refuse(window);
    Pin(window);
    EXPECT_FALSE(IsTopmost(window));
    ASSERT_EQ(actor.Requests(window).size(), 1U);
    EXPECT_EQ(actor.Requests(window)[0].flags, PinFlags);
    actor.Refuse(window, false);
    Pin(window);
    EXPECT_TRUE(IsTopmost(window));
}

TEST(ActorTest, WindowDiesInsideTheChosenRequest) {
    Actor actor;
    const HWND window = actor.Create({.title = L"Mortal"});
    actor.DieOnRequest(window, 3);
    for (int request = 1; request <= 3; ++request) {
        EXPECT_NE(IsWindow(window), FALSE) << "before request " << request;
        Pin(window);
    }
    EXPECT_EQ(IsWindow(window), FALSE);
    const std::vector<PositionRequest> requests = actor.Requests(window);
    EXPECT_EQ(std::count_if(requests.begin(), requests.end(),
                            [](const PositionRequest& request) {
                                return request.insertAfter == HWND_TOPMOST;
                            }),
              3);
}

TEST(ActorTest, HungActorDelaysRequestsButStillReportsItsRecords) {
    Actor actor;
    const HWND window = actor.Create({.title = L"Hanging"});
    constexpr auto HangTime = 1500ms;
    std::atomic<bool> pinned = false;
    const auto start = std::chrono::steady_clock::now();
    actor.Hang(HangTime);
    std::thread pinning([window, &pinned] {
        Pin(window);
        pinned = true;
    });
    EXPECT_TRUE(actor.Requests(window).empty());
    EXPECT_FALSE(pinned);
    pinning.join();
    EXPECT_GE(std::chrono::steady_clock::now() - start, HangTime);
    EXPECT_TRUE(IsTopmost(window));
    EXPECT_EQ(actor.Requests(window).size(), 1U);
}

TEST(ActorTest, WindowIsMinimisedRestoredHiddenShownMovedAndDestroyed) {
    Actor actor;
    const HWND window = actor.Create({.title = L"Moving"});
    actor.Minimise(window);
    EXPECT_NE(IsIconic(window), FALSE);
    actor.Restore(window);
    EXPECT_EQ(IsIconic(window), FALSE);
    actor.Hide(window);
    EXPECT_EQ(IsWindowVisible(window), FALSE);
    actor.Show(window, SW_SHOWNA);
    EXPECT_NE(IsWindowVisible(window), FALSE);
    actor.Place(window, 200, 210, 500, 400);
    EXPECT_EQ(WindowRect(window).left, 200);
    EXPECT_EQ(WindowRect(window).top, 210);
    EXPECT_EQ(WindowSize(window).cx, 500);
    EXPECT_EQ(WindowSize(window).cy, 400);
    actor.Destroy(window);
    EXPECT_EQ(IsWindow(window), FALSE);
    EXPECT_THROW(actor.Destroy(window), std::runtime_error);
}

TEST(ActorTest, ForegroundWindowCanBeChosen) {
    Actor actor;
    const HWND first = actor.Create({.title = L"First"});
    const HWND second = actor.Create({.title = L"Second", .x = 600});
    EXPECT_TRUE(actor.BringToForeground(first));
    EXPECT_EQ(GetForegroundWindow(), first);
    EXPECT_TRUE(actor.BringToForeground(second));
    EXPECT_EQ(GetForegroundWindow(), second);
}

TEST(ActorTest, ManyWindowsAreCreatedAtOnce) {
    Actor actor;
    const std::vector<HWND> windows =
        actor.CreateMany(520, {.title = L"Row ", .width = 150, .height = 80, .visible = false});
    const std::set<HWND> different(windows.begin(), windows.end());
    EXPECT_EQ(different.size(), 520U);
    EXPECT_EQ(WindowTitle(windows.front()), L"Row 0");
    EXPECT_EQ(WindowTitle(windows.back()), L"Row 519");
}

TEST(ActorTest, WindowsEndWithTheirOwner) {
    HWND window = nullptr;
    {
        Actor actor;
        window = actor.Create({.title = L"Short-lived"});
        // Its main thread cannot answer now, but the windows must still go.
        actor.Hang(60s);
    }
    EXPECT_EQ(IsWindow(window), FALSE);
    Actor polite;
    window = polite.Create({.title = L"Polite"});
    EXPECT_TRUE(polite.Quit());
    EXPECT_EQ(IsWindow(window), FALSE);
}

}  // namespace
}  // namespace morvane::test
