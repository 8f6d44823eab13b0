// The state once the program has started.

#include "program/scene.h"

namespace morvane::test {
namespace {

using StartTest = ProgramTest;

TEST_F(StartTest, FirstStartWritesTheDefaultFile) {
    const Program program = StartedProgram();
    EXPECT_EQ(ReadSettings(), SettingsText(true, {}));
}

TEST_F(StartTest, ExistingFileIsLeftAsItIs) {
    const std::string bytes = "# mine\r\n\r\n  Some window 1 2 \r\n@PINNING = what";
    ASSERT_TRUE(WriteSettings(bytes));
    const Program program = StartedProgram();
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(ReadSettings(), bytes);
}

TEST_F(StartTest, EmptyFileIsLeftEmpty) {
    ASSERT_TRUE(WriteSettings(""));
    const Program program = StartedProgram();
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(ReadSettings(), "");
}

// A posted command runs before the timer, so if the first command ends the program, all requests
// until then were made before the message loop.
TEST_F(StartTest, FirstPassRunsBeforeTheMessageLoop) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"The target window"});
    actor.ForgetRecords(target);
    const Program program;
    ASSERT_TRUE(WaitUntil([&] { return program.ControlWindow() != nullptr; }));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(TopmostRequests(actor, target), 1U);
}

TEST_F(StartTest, PinningSwitchedOffInTheFileHoldsFromTheStart) {
    ASSERT_TRUE(WriteSettings("@pinning=0\nTarget\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    EXPECT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_EQ(TopmostRequests(actor, target), 0U);
}

TEST_F(StartTest, ControlWindowIsAMessageWindowNamedAfterTheProgram) {
    const Program program = StartedProgram();
    const HWND control = program.ControlWindow();
    EXPECT_EQ(WindowTitle(control), L"Morvane");
    EXPECT_EQ(IsWindowVisible(control), FALSE);
    for (const HWND window : TopLevelWindows()) {
        EXPECT_FALSE(ProcessOf(window) == program.ProcessId() && IsWindowVisible(window) != FALSE);
        EXPECT_NE(window, control);
    }
}

TEST_F(StartTest, ProgramStartsWithoutTakingTheForeground) {
    Actor actor;
    const HWND window = actor.Create({.title = L"In front"});
    ASSERT_TRUE(actor.BringToForeground(window));
    const Program program = StartedProgram();
    EXPECT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_EQ(GetForegroundWindow(), window);
}

}  // namespace
}  // namespace morvane::test
