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

// Three places of 400 by 300 pixels that overlap at Shared, each with a point of its own.
constexpr POINT Shared{330, 330};
constexpr POINT OfSecond{560, 400};

class ZOrderTest : public ProgramTest {
protected:
    [[nodiscard]] HWND CreateAt(const wchar_t* title, int offset, COLORREF colour) {
        return Other().Create({.title = title,
                               .x = 100 + offset,
                               .y = 100 + offset,
                               .width = 400,
                               .height = 300,
                               .colour = colour});
    }
};

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
    const HWND pinned = CreateAt(L"Pinned", 0, Red);
    const HWND ordinary = CreateAt(L"Ordinary", 150, Blue);
    ASSERT_TRUE(Other().BringToForeground(ordinary));
    ASSERT_TRUE(Shows(Shared, Blue));
    const Program program = StartedProgram("Pinned\n", {pinned});
    EXPECT_TRUE(Shows(Shared, Red));
    Click(OfSecond, MouseButton::Left);
    EXPECT_TRUE(WaitUntil([&] { return GetForegroundWindow() == ordinary; }));
    EXPECT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_TRUE(IsAbove(pinned, ordinary));
    EXPECT_TRUE(Shows(Shared, Red));
    EXPECT_EQ(GetForegroundWindow(), ordinary);
}

TEST_F(ZOrderTest, EarlierEntriesLieAboveLaterOnes) {
    const HWND a = CreateAt(L"Window A", 0, Red);
    const HWND b = CreateAt(L"Window B", 50, Green);
    const HWND c = CreateAt(L"Window C", 100, Blue);
    struct Case {
        const char* lines;
        std::vector<HWND> highestFirst;
        COLORREF colour;
    };
    const Case cases[] = {
        {"Sentinel\nWindow A\nWindow B\nWindow C\n", {a, b, c}, Red},
        {"Sentinel\nWindow C\nWindow B\nWindow A\n", {c, b, a}, Blue},
    };
    const Sentinel sentinel(Other());
    const Program program = StartedProgram();
    for (const Case& item : cases) {
        WriteSettings(item.lines);
        EXPECT_EQ(sentinel.OrderOfNextPass({a, b, c}), item.highestFirst) << item.lines;
        EXPECT_TRUE(sentinel.DesktopShows(item.highestFirst)) << item.lines;
        EXPECT_TRUE(Shows(Shared, item.colour)) << item.lines;
    }
}

TEST_F(ZOrderTest, ClickOnALowerEntryIsUndoneWithoutTakingTheKeyboard) {
    const HWND first = CreateAt(L"First", 0, Red);
    const HWND second = CreateAt(L"Second", 150, Blue);
    const std::vector<HWND> order{first, second};
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\nFirst\nnobody\nSecond\n", {second});
    ASSERT_TRUE(sentinel.DesktopShows(order));
    ASSERT_TRUE(Other().BringToForeground(first));
    Other().ForgetRecords(second);
    Click(OfSecond, MouseButton::Left);
    ASSERT_TRUE(Received(Other(), second, WM_LBUTTONUP));
    ASSERT_TRUE(WaitUntil([&] { return GetForegroundWindow() == second; }));
    // Activation alone does not raise a window on every desktop, so raise it explicitly.
    Other().Raise(second);
    EXPECT_EQ(sentinel.OrderOfNextPass(order), order);
    EXPECT_TRUE(sentinel.DesktopShows(order));
    EXPECT_TRUE(Shows(Shared, Red));
    EXPECT_EQ(GetForegroundWindow(), second);
    TapKey('M');
    EXPECT_TRUE(Received(Other(), second, WM_KEYDOWN));
    EXPECT_TRUE(Other().Input(first).empty());
}

TEST_F(ZOrderTest, ForeignTopmostWindowStaysTopmostBelowThePinnedOne) {
    const HWND pinned = CreateAt(L"Pinned", 0, Red);
    const HWND foreign = CreateAt(L"Foreign", 50, Blue);
    Other().SetTopmost(foreign, true);
    const std::vector<HWND> order{pinned, foreign};
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\nPinned\n", {pinned});
    ASSERT_TRUE(sentinel.DesktopShows(order));
    Other().Raise(foreign);
    EXPECT_EQ(sentinel.OrderOfNextPass(order), std::vector<HWND>{pinned}) << "only asked once";
    EXPECT_TRUE(sentinel.DesktopShows(order));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_TRUE(IsTopmost(foreign)) << "nobody's pattern, so left alone";
}

}  // namespace
}  // namespace morvane::test
