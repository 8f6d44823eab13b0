// Windows that hang, die, refuse requests or are numerous.

#include <algorithm>

#include "program/scene.h"

namespace morvane::test {
namespace {

using namespace std::chrono_literals;

using TroubledWindowsTest = ProgramTest;

constexpr std::chrono::milliseconds LongTimeout{60'000};

TEST_F(TroubledWindowsTest, PassesGoOnAfterAWindowHung) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor hanging;
    Actor healthy;
    const HWND stuck = hanging.Create({.title = L"Target that hangs"});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(stuck));
    hanging.Hang(1500ms);
    const HWND later = healthy.Create({.title = L"Target that comes later"});
    EXPECT_TRUE(BecomesTopmost(later));
    const std::size_t before = TopmostRequests(hanging, stuck);
    EXPECT_TRUE(WaitUntil([&] { return TopmostRequests(hanging, stuck) > before; }));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_FALSE(IsTopmost(stuck));
    EXPECT_FALSE(IsTopmost(later));
}

TEST_F(TroubledWindowsTest, ExitWaitsForAHungWindowAndReleasesIt) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor hanging;
    const HWND stuck = hanging.Create({.title = L"Target"});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(stuck));
    hanging.Hang(1000ms);
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_FALSE(IsTopmost(stuck)) << "the exit did not wait";
}

// A message sent by another program is handled while a pass waits for a window; the rest of that
// pass runs after it.
TEST_F(TroubledWindowsTest, ExitSentDuringAHangingPassLeavesNoWindowTopmost) {
    struct SentEnd {
        const char* name;
        UINT message;
        WPARAM wParam;
    };
    for (const SentEnd& sent :
         {SentEnd{"close message", WM_CLOSE, 0}, SentEnd{"command", WM_COMMAND, ExitCommand}}) {
        SCOPED_TRACE(sent.name);
        ASSERT_TRUE(EditSettings("Healthy\nHung\n"));
        Actor hanging;
        Actor other;
        const HWND hung = hanging.Create({.title = L"Hung"});
        const HWND healthy = other.Create({.title = L"Healthy"});
        const Program program = StartedProgram();
        ASSERT_TRUE(BecomesTopmost(hung));
        ASSERT_TRUE(BecomesTopmost(healthy));
        hanging.Hang(2500ms);
        // The later entry is requested first; while the pass waits for it, the other gets no
        // request.
        ASSERT_TRUE(WaitUntil(
            [&] { return GetTickCount64() - other.Requests(healthy).back().tickCount > 1'000; }));
        const std::size_t before = TopmostRequests(hanging, hung);
        static_cast<void>(Answer(program.ControlWindow(), sent.message, sent.wParam, 0));
        EXPECT_EQ(program.WaitForExit(), 0U);
        EXPECT_GT(TopmostRequests(hanging, hung), before) << "no pass was waiting";
        EXPECT_FALSE(IsTopmost(hung));
        EXPECT_FALSE(IsTopmost(healthy));
    }
}

TEST_F(TroubledWindowsTest, WindowThatDiesWhileItIsPinnedDisturbsNoOther) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    std::vector<HWND> windows = actor.CreateMany(5, {.title = L"Target "});
    actor.DieOnRequest(windows[1], 1);
    actor.DieOnRequest(windows[3], 2);
    const Program program = StartedProgram();
    EXPECT_TRUE(WaitUntil([&] { return IsWindow(windows[1]) == FALSE; }));
    EXPECT_TRUE(WaitUntil([&] { return IsWindow(windows[3]) == FALSE; }));
    for (const std::size_t i : {0U, 2U, 4U}) {
        EXPECT_TRUE(BecomesTopmost(windows[i])) << i;
    }
    EXPECT_EQ(program.ExitByCommand(), 0U);
    for (const std::size_t i : {0U, 2U, 4U}) {
        EXPECT_FALSE(IsTopmost(windows[i])) << i;
    }
}

TEST_F(TroubledWindowsTest, WindowThatRefusesIsAskedAgainInEveryPass) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND refusing = actor.Create({.title = L"Target"});
    actor.Refuse(refusing);
    const Program program = StartedProgram();
    EXPECT_TRUE(WaitUntil([&] { return TopmostRequests(actor, refusing) >= 3; }));
    EXPECT_FALSE(IsTopmost(refusing));
    actor.Refuse(refusing, false);
    EXPECT_TRUE(BecomesTopmost(refusing));
}

TEST_F(TroubledWindowsTest, ProcessThatIsKilledDisturbsNothing) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    const Program program = StartedProgram();
    for (int round = 0; round < 3; ++round) {
        Actor actor;
        EXPECT_TRUE(BecomesTopmost(actor.Create({.title = L"Target"}))) << round;
    }
    EXPECT_EQ(program.ExitByCommand(), 0U);
}

TEST_F(TroubledWindowsTest, RestartedProgramIsPinnedAgain) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    const Program program = StartedProgram();
    {
        Actor actor;
        ASSERT_TRUE(BecomesTopmost(actor.Create({.title = L"Target"})));
        ASSERT_TRUE(actor.Quit());
    }
    Actor actor;
    EXPECT_TRUE(BecomesTopmost(actor.Create({.title = L"Target"})));
}

// A pass over this many windows takes longer than the timer's interval.
TEST_F(TroubledWindowsTest, ProgramCopesWithTwoThousandWindows) {
    constexpr int Parts = 40;
    constexpr int PartSize = 50;
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND below = actor.Create({.title = L"Target below"});
    // In batches, so that the other process answers in time on a busy machine.
    for (int part = 0; part < Parts; ++part) {
        static_cast<void>(actor.CreateMany(
            PartSize, {.title = L"Passer-by ", .style = WS_POPUP, .width = 40, .height = 30}));
    }
    const HWND above = actor.Create({.title = L"Target above"});
    ASSERT_GT(RowTitles().size(), 2000U);
    const Program program;
    ASSERT_NE(program.WaitForControlWindow(LongTimeout), nullptr);
    EXPECT_TRUE(IsTopmost(below));
    EXPECT_TRUE(IsTopmost(above));
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand, LongTimeout));
    EXPECT_TRUE(WaitUntil([&] { return !IsTopmost(below) && !IsTopmost(above); }, LongTimeout));
    EXPECT_EQ(ReadSettings(), SettingsText(false, {"Target"}));
    ASSERT_TRUE(program.PostCommand(ExitCommand));
    EXPECT_EQ(program.WaitForExit(LongTimeout), 0U);
}

TEST_F(TroubledWindowsTest, CrowdOfWindowsIsPinnedAndReleased) {
    ASSERT_TRUE(WriteSettings("crowd\n"));
    Actor actor;
    const std::vector<HWND> crowd = actor.CreateMany(64, {.title = L"Crowd "});
    const std::vector<HWND> others = actor.CreateMany(16, {.title = L"Passer-by "});
    const auto topmost = [](const std::vector<HWND>& windows) {
        return std::count_if(windows.begin(), windows.end(), IsTopmost);
    };
    const Program program = StartedProgram();
    EXPECT_TRUE(WaitUntil([&] { return topmost(crowd) == 64; }));
    EXPECT_EQ(topmost(others), 0);
    EXPECT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    // A sent command may come in the middle of a pass, which then finishes; the next pass corrects
    // the result.
    EXPECT_TRUE(WaitUntil([&] { return topmost(crowd) == 0; }));
    EXPECT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_TRUE(WaitUntil([&] { return topmost(crowd) == 64; }));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(topmost(crowd), 0);
}

}  // namespace
}  // namespace morvane::test
