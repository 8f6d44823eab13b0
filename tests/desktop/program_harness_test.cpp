// Tests of the harness: starting, controlling and ending the program under test.

#include <chrono>
#include <gtest/gtest.h>

#include "support/actor.h"
#include "support/program.h"
#include "support/test_environment.h"
#include "support/tray.h"
#include "support/tray_recorder.h"
#include "support/wait.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

using namespace std::chrono_literals;

constexpr WORD UnknownCommand = 4000;
constexpr WORD StartWithWindowsCommand = 1010;

class ProgramHarnessTest : public testing::Test {
protected:
    void SetUp() override {
        MORVANE_REQUIRE_DISPOSABLE_PROFILE();
        ResetProfile();
    }
};

TEST_F(ProgramHarnessTest, ProgramIsStartedControlledAndEnded) {
    const Program program;
    const HWND control = program.WaitForControlWindow();
    ASSERT_NE(control, nullptr);
    EXPECT_EQ(ProcessOf(control), program.ProcessId());
    EXPECT_TRUE(program.IsRunning());
    EXPECT_TRUE(TrayIconPresent(control));
    EXPECT_TRUE(program.SendCommand(UnknownCommand));
    EXPECT_FALSE(program.WaitForExit(100ms).has_value());
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_FALSE(program.IsRunning());
    EXPECT_EQ(program.ControlWindow(), nullptr);
    EXPECT_FALSE(TrayIconPresent(control));
}

TEST_F(ProgramHarnessTest, ControlWindowIsReturnedOnlyOnceItsCreationIsComplete) {
    Actor actor;
    const HWND window = actor.Create({.title = L"Slow to pin"});
    ASSERT_TRUE(WriteSettings("slow to pin\n"));
    const Program program;
    ASSERT_TRUE(WaitUntil([&] { return program.ControlWindow() != nullptr; }));
    ASSERT_NE(program.WaitForControlWindow(), nullptr);
    EXPECT_TRUE(IsTopmost(window));
}

TEST_F(ProgramHarnessTest, FirstPassThatHangsDelaysTheControlWindow) {
    Actor actor;
    const HWND window = actor.Create({.title = L"Hangs while pinned"});
    ASSERT_TRUE(WriteSettings("hangs while\n"));
    actor.Hang(2s);
    const Program program;
    ASSERT_NE(program.WaitForControlWindow(), nullptr);
    EXPECT_TRUE(IsTopmost(window));
}

TEST_F(ProgramHarnessTest, KilledProgramLeavesNoIconBehind) {
    const Program program;
    const HWND control = program.WaitForControlWindow();
    ASSERT_NE(control, nullptr);
    ASSERT_TRUE(TrayIconPresent(control));
    program.Kill();
    EXPECT_FALSE(program.IsRunning());
    EXPECT_FALSE(TrayIconPresent(control));
}

TEST_F(ProgramHarnessTest, RecordedProgramCallsTheRecorderInPlaceOfTheShell) {
    const TrayRecorder recorder;
    const Program program;
    const HWND control = program.WaitForControlWindow();
    ASSERT_NE(control, nullptr);
    ASSERT_EQ(recorder.Calls().size(), 1U);
    EXPECT_EQ(recorder.Calls().back().window, control);
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(recorder.Calls().size(), 2U);
}

TEST_F(ProgramHarnessTest, ProgramWithASwitchEndsWithItsExitCode) {
    EXPECT_EQ(RunProgram(L"--remove-data"), 0U);
    const ShellFolderOverride nowhere(L"AppData", L"Q:\\no such drive");
    EXPECT_EQ(RunProgram(L"--remove-data"), 2U);
}

TEST_F(ProgramHarnessTest, InterfaceLanguageIsChosenByVariable) {
    const TrayRecorder recorder;
    const auto balloonText = [&recorder](const Program& program) {
        EXPECT_NE(program.WaitForControlWindow(), nullptr);
        EXPECT_TRUE(program.SendCommand(StartWithWindowsCommand));
        const std::wstring text = recorder.Calls().back().info;
        EmptyStartupFolder();
        return text;
    };
    const std::wstring english = balloonText(Program(L"", {{L"MORVANE_LANG", L"en"}}));
    const std::wstring japanese = balloonText(Program(L"", {{L"MORVANE_LANG", L"ja"}}));
    EXPECT_FALSE(english.empty());
    EXPECT_NE(japanese, english);
}

}  // namespace
}  // namespace morvane::test
