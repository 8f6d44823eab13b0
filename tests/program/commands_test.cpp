// The commands that the menu sends, sent directly.

#include "program/scene.h"

namespace morvane::test {
namespace {

using CommandsTest = ProgramTest;

TEST_F(CommandsTest, UnknownIdentifiersDoNothing) {
    const TrayRecorder recorder;
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    ASSERT_TRUE(sentinel.WaitForPin());
    const std::size_t calls = recorder.Calls().size();
    for (const WPARAM command :
         {0U, 1U, 2U, 1000U, 1005U, 1007U, 1008U, 1011U, 2499U, 3500U, 4000U, 0xFFFFU}) {
        EXPECT_EQ(Answer(program.ControlWindow(), WM_COMMAND, command, 0), 0) << command;
    }
    EXPECT_TRUE(sentinel.WaitForPass(program));
    EXPECT_TRUE(program.IsRunning());
    EXPECT_EQ(recorder.Calls().size(), calls);
    EXPECT_EQ(ReadSettings(), "Sentinel\n");
    EXPECT_FALSE(PathExists(StartupShortcut()));
}

TEST_F(CommandsTest, KnownIdentifiersAnswerZero) {
    const TrayRecorder recorder;
    const Program program = StartedProgram();
    for (const WPARAM command : {1001U, 1002U, 1006U, 1010U, 2999U, 3499U}) {
        EXPECT_EQ(Answer(program.ControlWindow(), WM_COMMAND, command, 0), 0) << command;
    }
}

TEST_F(CommandsTest, UnknownTimersDoNothing) {
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    ASSERT_TRUE(sentinel.WaitForPin());
    for (const WPARAM timer : {0U, 2U, 4U, 500U, 1001U}) {
        EXPECT_EQ(Answer(program.ControlWindow(), WM_TIMER, timer, 0), 0) << timer;
    }
    EXPECT_TRUE(sentinel.WaitForTimedPass());
}

TEST_F(CommandsTest, AlwaysOnTopTurnsPinningOffAndOnAndSavesIt) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(target));
    EXPECT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(false, {"Target"}));
    EXPECT_TRUE(BecomesOrdinary(target));
    EXPECT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Target"}));
    EXPECT_TRUE(BecomesTopmost(target));
}

TEST_F(CommandsTest, SwitchedOffProgramLeavesWindowsAlone) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(target));
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    ASSERT_TRUE(BecomesOrdinary(target));
    actor.ForgetRecords(target);
    // The user's own choice from now on.
    actor.SetTopmost(target, true);
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_TRUE(BecomesTopmost(target));
    EXPECT_EQ(actor.Requests(target).size(), 1U);
}

TEST_F(CommandsTest, ApplyNowAppliesTheFileAtOnce) {
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    ASSERT_TRUE(EditSettings("target\n"));
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_TRUE(BecomesTopmost(target));
}

TEST_F(CommandsTest, RowCommandAddsAndRemovesTheWindow) {
    Actor actor;
    const HWND alpha = actor.Create({.title = L"alpha"});
    const HWND beta = actor.Create({.title = L"Beta"});
    ASSERT_GT(RowOfTitle(L"alpha"), RowOfTitle(L"Beta"));
    const Program program = StartedProgram();
    const auto toggle = [&program](const wchar_t* title) {
        return program.SendCommand(static_cast<WORD>(TogglePinCommand + RowOfTitle(title)));
    };
    ASSERT_TRUE(toggle(L"alpha"));
    EXPECT_TRUE(BecomesTopmost(alpha));
    EXPECT_TRUE(BecomesOrdinary(beta));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"alpha"}));
    ASSERT_TRUE(toggle(L"Beta"));
    EXPECT_TRUE(BecomesTopmost(beta));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"alpha", "Beta"}));
    ASSERT_TRUE(toggle(L"alpha"));
    EXPECT_TRUE(BecomesOrdinary(alpha));
    EXPECT_TRUE(BecomesTopmost(beta));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Beta"}));
}

TEST_F(CommandsTest, RowCommandRemovesTheShorterPatternAndThenAddsTheTitle) {
    ASSERT_TRUE(WriteSettings("notes\n"));
    Actor actor;
    const HWND window = actor.Create({.title = L"Notes.txt - Editor"});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(window));
    const int row = RowOfTitle(L"Notes.txt - Editor");
    ASSERT_TRUE(program.SendCommand(static_cast<WORD>(TogglePinCommand + row)));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {}));
    EXPECT_TRUE(BecomesOrdinary(window));
    ASSERT_TRUE(program.SendCommand(static_cast<WORD>(TogglePinCommand + row)));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Notes.txt - Editor"}));
    EXPECT_TRUE(BecomesTopmost(window));
}

TEST_F(CommandsTest, RowCommandLooksAtTheWindowsOfNow) {
    Actor actor;
    const HWND first = actor.Create({.title = L"M"});
    const Program program = StartedProgram();
    const int row = RowOfTitle(L"M");
    const HWND before = actor.Create({.title = L"A comes first"});
    ASSERT_EQ(RowOfTitle(L"A comes first"), row);
    ASSERT_TRUE(program.SendCommand(static_cast<WORD>(TogglePinCommand + row)));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"A comes first"}));
    EXPECT_TRUE(BecomesTopmost(before));
    EXPECT_TRUE(BecomesOrdinary(first));
}

TEST_F(CommandsTest, RowsBeyondTheListDoNothing) {
    const TrayRecorder recorder;
    Actor actor;
    static_cast<void>(actor.Create({.title = L"Only one"}));
    const Program program = StartedProgram();
    for (const int row : {100, 499}) {
        EXPECT_TRUE(program.SendCommand(static_cast<WORD>(TogglePinCommand + row)));
        EXPECT_TRUE(program.SendCommand(static_cast<WORD>(MinSizeCommand + row)));
    }
    EXPECT_TRUE(Balloons(recorder).empty());
    EXPECT_EQ(ReadSettings(), SettingsText(true, {}));
}

TEST_F(CommandsTest, CommandNumberIsTheLowHalfOnly) {
    const Program program = StartedProgram();
    EXPECT_EQ(Answer(program.ControlWindow(), WM_COMMAND, MAKEWPARAM(AlwaysOnTopCommand, 1), 0), 0);
    EXPECT_EQ(ReadSettings(), SettingsText(false, {}));
}

TEST_F(CommandsTest, FullListAddsNothing) {
    std::string lines;
    for (int i = 0; i < 100; ++i) {
        lines += "Nobody " + std::to_string(i) + "\n";
    }
    ASSERT_TRUE(WriteSettings(lines));
    Actor actor;
    const HWND window = actor.Create({.title = L"One too many"});
    const Program program = StartedProgram();
    ASSERT_TRUE(
        program.SendCommand(static_cast<WORD>(TogglePinCommand + RowOfTitle(L"One too many"))));
    EXPECT_EQ(ReadSettings(), lines);
    EXPECT_TRUE(BecomesOrdinary(window));
}

TEST_F(CommandsTest, CommandAfterTheFileWasDeletedWritesItAgain) {
    const Program program = StartedProgram();
    ASSERT_NE(DeleteFileW(SettingsPath().c_str()), FALSE);
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(false, {}));
}

}  // namespace
}  // namespace morvane::test
