// Windows that hang, die or are numerous.

#include <algorithm>

#include "program/scene.h"

namespace morvane::test {
namespace {

using namespace std::chrono_literals;

using TroubledWindowsTest = ProgramTest;

constexpr std::chrono::milliseconds LongTimeout{60'000};

TEST_F(TroubledWindowsTest, PassesAndTheExitWaitForAHungWindowAndGoOn) {
    Actor hanging;
    const HWND stuck = hanging.Create({.title = L"Target that hangs"});
    const Program program = StartedProgram("Target\n", {stuck});
    hanging.Hang(1500ms);
    const HWND later = Window(L"Target that comes later");
    EXPECT_TRUE(BecomesTopmost(later));
    const std::size_t before = TopmostRequests(hanging, stuck);
    EXPECT_TRUE(WaitUntil([&] { return TopmostRequests(hanging, stuck) > before; }));
    hanging.Hang(1000ms);
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_FALSE(IsTopmost(stuck)) << "the exit did not wait";
    EXPECT_FALSE(IsTopmost(later));
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
        Actor hanging;
        const HWND hung = hanging.Create({.title = L"Hung"});
        const HWND healthy = Window(L"Healthy");
        const Program program = StartedProgram("Healthy\nHung\n", {hung, healthy});
        hanging.Hang(2500ms);
        // The later entry is requested first; while the pass waits for it, the other gets no
        // request.
        ASSERT_TRUE(WaitUntil(
            [&] { return GetTickCount64() - Other().Requests(healthy).back().tickCount > 1'000; }));
        const std::size_t before = TopmostRequests(hanging, hung);
        static_cast<void>(Answer(program.ControlWindow(), sent.message, sent.wParam, 0));
        EXPECT_EQ(program.WaitForExit(), 0U);
        EXPECT_GT(TopmostRequests(hanging, hung), before) << "no pass was waiting";
        EXPECT_FALSE(IsTopmost(hung));
        EXPECT_FALSE(IsTopmost(healthy));
        Other().Destroy(healthy);
    }
}

// Each round's windows go with their process: killed, or ended by itself.
TEST_F(TroubledWindowsTest, WindowsOfARestartedProcessArePinnedAgain) {
    const Program program = StartedProgram("Target\n");
    for (const bool killed : {true, false, true}) {
        Actor actor;
        EXPECT_TRUE(BecomesTopmost(actor.Create({.title = L"Target"})));
        EXPECT_TRUE(killed || actor.Quit());
    }
    EXPECT_EQ(program.ExitByCommand(), 0U);
}

// A pass over this many windows takes longer than the timer's interval.
TEST_F(TroubledWindowsTest, ProgramCopesWithTwoThousandWindows) {
    constexpr int Parts = 40;
    constexpr int PartSize = 50;
    WriteSettings("Target\n");
    const HWND below = Window(L"Target below");
    // In batches, so that the other process answers in time on a busy machine.
    for (int part = 0; part < Parts; ++part) {
        static_cast<void>(Other().CreateMany(
            PartSize, {.title = L"Passer-by ", .style = WS_POPUP, .width = 40, .height = 30}));
    }
    const HWND above = Window(L"Target above");
    ASSERT_GT(RowTitles().size(), 2000U);
    const Program program;
    ASSERT_NE(program.WaitForControlWindow(LongTimeout), nullptr);
    EXPECT_TRUE(IsTopmost(below));
    EXPECT_TRUE(IsTopmost(above));
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand, LongTimeout));
    EXPECT_TRUE(WaitUntil([&] { return !IsTopmost(below) && !IsTopmost(above); }, LongTimeout));
    EXPECT_EQ(ReadSettings(), SettingsText(false, "Target\n"));
    ASSERT_TRUE(program.PostCommand(ExitCommand));
    EXPECT_EQ(program.WaitForExit(LongTimeout), 0U);
}

TEST_F(TroubledWindowsTest, CrowdOfWindowsIsPinnedAndReleasedThoughSomeDie) {
    const std::vector<HWND> crowd = Other().CreateMany(64, {.title = L"Crowd "});
    const std::vector<HWND> others = Other().CreateMany(16, {.title = L"Passer-by "});
    Other().DieOnRequest(crowd[1], 1);
    Other().DieOnRequest(crowd[3], 2);
    const auto topmost = [](const std::vector<HWND>& windows) {
        return std::count_if(windows.begin(), windows.end(), IsTopmost);
    };
    const Program program = StartedProgram("crowd\n");
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(WaitUntil([&] { return topmost(crowd) == 62; })) << round;
        EXPECT_EQ(topmost(others), 0) << round;
        EXPECT_TRUE(program.SendCommand(AlwaysOnTopCommand));
        // A sent command may come in the middle of a pass, which then finishes; the next pass
        // corrects the result.
        EXPECT_TRUE(WaitUntil([&] { return topmost(crowd) == 0; })) << round;
        EXPECT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    }
    EXPECT_TRUE(WaitUntil([&] { return topmost(crowd) == 62; }));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(topmost(crowd), 0);
}

}  // namespace
}  // namespace morvane::test
