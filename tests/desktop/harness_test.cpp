// What the other tests rely on without noticing if it failed: they would pass all the same.

#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

#include "support/actor.h"
#include "support/import_patch.h"
#include "support/program.h"
#include "support/test_environment.h"
#include "support/tray.h"
#include "support/user_input.h"
#include "support/wait.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

using namespace std::chrono_literals;

class HarnessTest : public testing::Test {
protected:
    void SetUp() override { MORVANE_REQUIRE_DISPOSABLE_PROFILE(); }
};

TEST_F(HarnessTest, RequestsAreRecordedWithTheirTimeAndOrderEvenWhileTheActorHangs) {
    Actor actor;
    const HWND first = actor.Create({.title = L"First"});
    const HWND second = actor.Create({.title = L"Second"});
    const ULONGLONG start = GetTickCount64();
    actor.SetTopmost(second, true);
    actor.SetTopmost(first, true);
    actor.Hang(60s);
    const std::vector<PositionRequest> ofFirst = actor.Requests(first);
    const std::vector<PositionRequest> ofSecond = actor.Requests(second);
    ASSERT_EQ(ofFirst.size(), 1U);
    ASSERT_EQ(ofSecond.size(), 1U);
    EXPECT_GT(ofFirst[0].counter, ofSecond[0].counter);
    EXPECT_GE(ofSecond[0].tickCount, start);
    EXPECT_GE(ofFirst[0].tickCount, ofSecond[0].tickCount);
    EXPECT_LE(ofFirst[0].tickCount, GetTickCount64());
}

TEST_F(HarnessTest, WindowsAreAboveOnlyWhatLiesBelowThem) {
    Actor actor;
    const HWND first = actor.Create({.title = L"First"});
    const HWND second = actor.Create({.title = L"Second"});
    EXPECT_TRUE(IsAbove(second, first));
    EXPECT_FALSE(IsAbove(first, second));
    actor.SetTopmost(first, true);
    EXPECT_TRUE(IsAbove(first, second));
    EXPECT_FALSE(IsAbove(second, first));
    actor.Destroy(second);
    EXPECT_FALSE(IsAbove(first, second)) << "dead";
}

TEST_F(HarnessTest, ButtonsAndKeysReachAForeignWindow) {
    Actor actor;
    const HWND window = actor.Create({.title = L"Clicked"});
    const auto receives = [&](UINT message) {
        return WaitUntil([&] {
            const std::vector<InputEvent> events = actor.Input(window);
            return !events.empty() && events.back().message == message;
        });
    };
    MovePointer({300, 250});
    PressButton(MouseButton::Left);
    EXPECT_TRUE(receives(WM_LBUTTONDOWN));
    ReleaseButton(MouseButton::Left);
    EXPECT_TRUE(receives(WM_LBUTTONUP));
    PressButton(MouseButton::Right);
    EXPECT_TRUE(receives(WM_RBUTTONDOWN));
    ReleaseButton(MouseButton::Right);
    EXPECT_TRUE(receives(WM_RBUTTONUP));
    ASSERT_TRUE(actor.BringToForeground(window));
    TapKey(VK_F5);
    EXPECT_TRUE(receives(WM_KEYUP));
    EXPECT_EQ(actor.Input(window).back().x, VK_F5);
}

TEST_F(HarnessTest, WindowsEndWithTheirOwnerEvenIfItHangs) {
    HWND window = nullptr;
    {
        Actor actor;
        window = actor.Create({.title = L"Short-lived"});
        actor.Hang(60s);
    }
    EXPECT_EQ(IsWindow(window), FALSE);
}

TEST_F(HarnessTest, FunctionThatIsNotImportedIsNotReplaced) {
    EXPECT_THROW(static_cast<void>(Refuse<decltype(&GetWindow), nullptr>("NoSuchFunction")),
                 std::runtime_error);
}

// Otherwise a test could look before the program's first pass, and find nothing done.
TEST_F(HarnessTest, FirstPassThatHangsDelaysTheControlWindow) {
    ResetProfile();
    Actor actor;
    const HWND window = actor.Create({.title = L"Hangs while pinned"});
    WriteSettings("hangs while\n");
    actor.Hang(2s);
    const Program program;
    ASSERT_NE(program.WaitForControlWindow(), nullptr);
    EXPECT_TRUE(IsTopmost(window));
}

TEST_F(HarnessTest, KilledProgramLeavesNoIconBehind) {
    ResetProfile();
    const Program program;
    const HWND control = program.WaitForControlWindow();
    ASSERT_TRUE(TrayIconPresent(control));
    program.Kill();
    EXPECT_FALSE(program.IsRunning());
    EXPECT_FALSE(TrayIconPresent(control));
}

}  // namespace
}  // namespace morvane::test
