// The state once the program has started.

#include "program/scene.h"

namespace morvane::test {
namespace {

using StartTest = ProgramTest;

// The program waits for the answer to its call, so nothing changes while the recorder looks.
TEST_F(StartTest, FirstStartWritesTheDefaultFileBeforeTheIconAppears) {
    TrayRecorder recorder;
    recorder.Watch(SettingsPath());
    const Program program = StartedProgram();
    EXPECT_EQ(ReadSettings(), SettingsText(true, ""));
    ASSERT_EQ(recorder.Calls().size(), 1U);
    EXPECT_TRUE(recorder.Calls()[0].watchedPathExists);
}

// A posted command runs before the timer, so if the first command ends the program, all requests
// until then were made before the message loop.
TEST_F(StartTest, FirstPassRunsBeforeTheMessageLoop) {
    const TrayRecorder recorder;
    const HWND target = Window(L"The target window");
    Other().ForgetRecords(target);
    WriteSettings("Target\n");
    const Program program;
    ASSERT_TRUE(WaitUntil([&] { return program.ControlWindow() != nullptr; }));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(TopmostRequests(Other(), target), 1U);
    const std::vector<TrayCall> calls = recorder.Calls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].message, DWORD{NIM_ADD});
    EXPECT_EQ(calls[1].message, DWORD{NIM_DELETE});
}

TEST_F(StartTest, PinningSwitchedOffInTheFileHoldsFromTheStart) {
    const HWND target = Window(L"Target");
    const Program program = StartedProgram("@pinning=0\nTarget\n");
    EXPECT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(TopmostRequests(Other(), target), 0U);
    EXPECT_EQ(ReadSettings(), "@pinning=0\nTarget\n");
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
    const HWND window = Window(L"In front");
    ASSERT_TRUE(Other().BringToForeground(window));
    const Program program = StartedProgram();
    EXPECT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_EQ(GetForegroundWindow(), window);
}

}  // namespace
}  // namespace morvane::test
