// The running program continues when the platform refuses what it needs.

#include "program/faulty_scene.h"
#include "program/menu_scene.h"

namespace morvane::test {
namespace {

using RunningFaultsTest = FaultyProgramTest;

TEST_F(RunningFaultsTest, ShellThatRefusesIconAndBalloonsStopsNoCommand) {
    const TrayRecorder recorder;
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedFaultyProgram("Shell_NotifyIconW");
    EXPECT_EQ(CountOf("Shell_NotifyIconW failed"), 2U) << "the icon is offered twice";
    ASSERT_TRUE(program.SendCommand(StartWithWindowsCommand));
    EXPECT_TRUE(PathExists(StartupShortcut()));
    EXPECT_EQ(CountOf("Shell_NotifyIconW failed"), 3U) << "the balloon is tried once";
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_TRUE(BecomesOrdinary(target));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(CountOf("Shell_NotifyIconW failed"), 4U) << "on removing the icon";
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(RunningFaultsTest, RefusedBalloonLeavesTheCommandDone) {
    const TrayRecorder recorder;
    Actor actor;
    static_cast<void>(actor.Create({.title = L"Target", .width = 400, .height = 300}));
    const Program program = StartedFaultyProgram("Shell_NotifyIconW@2-");
    ASSERT_TRUE(SendRowCommand(program, TogglePinCommand, L"Target"));
    ASSERT_TRUE(SendRowCommand(program, MinSizeCommand, L"Target"));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Target\t400\t300"}));
    EXPECT_EQ(CountOf("Shell_NotifyIconW failed"), 1U);
    EXPECT_TRUE(Balloons(recorder).empty());
}

TEST_F(RunningFaultsTest, FolderThatCannotBeMadeLeavesTheProgramWithoutAFile) {
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedFaultyProgram("CreateDirectoryW");
    EXPECT_GT(CountOf("CreateDirectoryW failed"), 0U);
    ASSERT_TRUE(SendRowCommand(program, TogglePinCommand, L"Target"));
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_FALSE(IsTopmost(target)) << "the pass read nothing";
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_FALSE(PathExists(DataFolder()));
}

TEST_F(RunningFaultsTest, FolderThatCannotBeWrittenToKeepsWhatItHolds) {
    for (const std::optional<std::string>& held :
         {std::optional<std::string>(), std::optional<std::string>("Other\n")}) {
        SCOPED_TRACE(held.value_or("no file"));
        ResetProfile();
        ForgetRecordedCalls();
        ASSERT_NE(CreateDirectoryW(DataFolder().c_str(), nullptr), FALSE);
        if (held) {
            ASSERT_TRUE(WriteSettings(*held));
        }
        Actor actor;
        const HWND target = actor.Create({.title = L"Target"});
        const Program program = StartedFaultyProgram("CreateFileW");
        const std::size_t atStart = CountOf("CreateFileW failed");
        EXPECT_EQ(atStart > 0, !held) << "a missing file is written at the start";
        ASSERT_TRUE(SendRowCommand(program, TogglePinCommand, L"Target"));
        EXPECT_GT(CountOf("CreateFileW failed"), atStart);
        ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
        EXPECT_FALSE(IsTopmost(target)) << "the pass read what the folder holds";
        EXPECT_EQ(program.ExitByCommand(), 0U);
        EXPECT_TRUE(PathExists(DataFolder()));
        EXPECT_EQ(PathExists(SettingsPath()), held.has_value());
        EXPECT_EQ(ReadSettings(), held);
    }
}

TEST_F(RunningFaultsTest, FileThatMayNotBeWrittenKeepsWhatItHolds) {
    const TrayRecorder recorder;
    const std::string bytes = "# mine\r\nTarget\r\n";
    ASSERT_TRUE(WriteSettings(bytes));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedFaultyProgram("CreateFileW");
    ASSERT_TRUE(IsTopmost(target));
    for (const WORD command : {AlwaysOnTopCommand, ApplyNowCommand}) {
        ASSERT_TRUE(program.SendCommand(command));
    }
    EXPECT_EQ(CountOf("CreateFileW failed"), 1U);
    EXPECT_EQ(ReadSettings(), bytes);
    EXPECT_TRUE(BecomesTopmost(target)) << "the file counts again";
    EXPECT_TRUE(Balloons(recorder).empty());
}

// The file is rewritten in place, so what it held is lost when the disk is full.
TEST_F(RunningFaultsTest, DiskThatFillsUpDuringASaveCutsTheFile) {
    const std::string whole = SettingsText(false, {"Target"});
    for (const std::size_t taken : {std::size_t{0}, std::size_t{20}, whole.size() - 3}) {
        SCOPED_TRACE(taken);
        ASSERT_TRUE(EditSettings("Target\n"));
        Actor actor;
        const HWND target = actor.Create({.title = L"Target"});
        const Program program = StartedFaultyProgram("WriteFile=" + std::to_string(taken));
        ASSERT_TRUE(IsTopmost(target));
        ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
        EXPECT_EQ(ReadSettings(), whole.substr(0, taken));
        EXPECT_TRUE(program.SendCommand(ApplyNowCommand)) << "still running";
        EXPECT_EQ(program.ExitByCommand(), 0U);
        EXPECT_EQ(ReadSettings(), whole.substr(0, taken)) << "nothing is written at the end";
    }
}

TEST_F(RunningFaultsTest, FileThatCannotBeEmptiedKeepsWhatItHolds) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    const Program program = StartedFaultyProgram("SetEndOfFile");
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_EQ(CountOf("SetEndOfFile failed"), 1U);
    EXPECT_EQ(ReadSettings(), "Target\n");
}

TEST_F(RunningFaultsTest, FileThatCannotBeReadMeansNoEntriesUntilItCan) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    // More reads than the timer makes before the commands below.
    const Program program = StartedFaultyProgram("ReadFile@1-60");
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_FALSE(IsTopmost(target));
    ASSERT_EQ(CountOf("ReadFile passed"), 0U) << "no longer failing";
    EXPECT_TRUE(WaitUntil([&] {
        static_cast<void>(program.SendCommand(ApplyNowCommand));
        return IsTopmost(target);
    }));
    EXPECT_EQ(CountOf("ReadFile failed"), 60U);
    EXPECT_EQ(ReadSettings(), "Target\n");
}

// By design, a command saves what the latest pass read, whatever the file holds by then.
TEST_F(RunningFaultsTest, CommandAfterAFailedReadSavesWhatWasReadAndLosesTheEntries) {
    struct FailedRead {
        const char* plan;
        const char* failure;
    };
    for (const FailedRead& item :
         {FailedRead{"ReadFile", "ReadFile failed"},
          // Both reads at the start fail, and without a timer there is no third before the command.
          FailedRead{"ReadFile@1-2,SetTimer", "ReadFile failed"},
          // The same for the folder's path.
          FailedRead{"SHGetFolderPathW@1-4,SetTimer", "SHGetFolderPathW failed"}}) {
        SCOPED_TRACE(item.plan);
        ForgetRecordedCalls();
        ASSERT_TRUE(EditSettings(SettingsText(true, {"First", "Second\t500\t400"})));
        const Program program = StartedFaultyProgram(item.plan);
        ASSERT_GT(CountOf(item.failure), 0U);
        ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
        EXPECT_EQ(ReadSettings(), SettingsText(false, {}));
        EXPECT_EQ(program.ExitByCommand(), 0U);
    }
}

TEST_F(RunningFaultsTest, WithoutApplicationDataNothingIsOpenedOrWritten) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedFaultyProgram("SHGetFolderPathW,ShellExecuteW@0");
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_FALSE(IsTopmost(target));
    EXPECT_EQ(ReadSettings(), "Target\n");
    EXPECT_EQ(CountOf("ShellExecuteW passed"), 0U);
    EXPECT_EQ(program.ExitByCommand(), 0U);
}

TEST_F(RunningFaultsTest, ApplicationDataThatComesBackIsUsedAgain) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedFaultyProgram("SHGetFolderPathW@1-8");
    EXPECT_TRUE(BecomesTopmost(target));
    EXPECT_EQ(CountOf("SHGetFolderPathW failed"), 8U);
    EXPECT_EQ(ReadSettings(), "Target\n");
}

TEST_F(RunningFaultsTest, EditorThatDoesNotStartStopsNothing) {
    const TrayRecorder recorder;
    const Program program = StartedFaultyProgram("ShellExecuteW,GetSystemDirectoryW");
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    EXPECT_EQ(CountOf("GetSystemDirectoryW failed"), 1U);
    EXPECT_EQ(CountOf("ShellExecuteW failed"), 1U);
    EXPECT_TRUE(Balloons(recorder).empty());
    EXPECT_TRUE(program.SendCommand(ApplyNowCommand));
}

// The bytes past the buffer may be the return address.
TEST_F(RunningFaultsTest, OverrunBufferEndsTheProgram) {
    // Keeps the icon from the taskbar, where one that nobody removes would stay for later tests.
    const TrayRecorder recorder;
    constexpr DWORD StackBufferOverrun = 0xC0000409;
    for (const char* plan : {"GetSystemDirectoryW=16", "GetSystemDirectoryW=8"}) {
        const Program program = StartedFaultyProgram(plan);
        ASSERT_TRUE(program.PostCommand(OpenSettingsCommand));
        EXPECT_EQ(program.WaitForExit(), StackBufferOverrun) << plan;
        EXPECT_EQ(CountOf("GetSystemDirectoryW failed"), 1U) << plan;
        ForgetRecordedCalls();
    }
}

// There is nothing sensible left to do; the next instance finds the windows left on top.
TEST_F(RunningFaultsTest, WithoutMemoryTheProgramEndsAtOnce) {
    // Keeps the icon from the taskbar, where one that nobody removes would stay for later tests.
    const TrayRecorder recorder;
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    {
        const Program program = StartedFaultyProgram("malloc@60");
        EXPECT_TRUE(IsTopmost(target));
        // Until enough memory has been requested.
        EXPECT_TRUE(WaitUntil([&program] {
            static_cast<void>(program.PostCommand(ApplyNowCommand));
            return !program.IsRunning();
        }));
        EXPECT_EQ(program.WaitForExit(), STATUS_NO_MEMORY);
    }
    EXPECT_EQ(CountOf("malloc failed"), 1U);
    EXPECT_EQ(ReadSettings(), "Target\n");
    const Program next = StartedProgram();
    EXPECT_EQ(next.ExitByCommand(), 0U);
    EXPECT_FALSE(IsTopmost(target));
}

// Nothing catches the runtime library's exceptions.
TEST_F(RunningFaultsTest, WhateverTheLibraryThrowsEndsTheProgramAtOnce) {
    // Keeps the icon from the taskbar, where one that nobody removes would stay for later tests.
    const TrayRecorder recorder;
    struct Case {
        const char* plan;
        DWORD exitCode;
    };
    constexpr Case Cases[] = {
        {"ShellExecuteW=1", STATUS_FATAL_APP_EXIT},
        {"ShellExecuteW=2", STATUS_FATAL_APP_EXIT},
        {"ShellExecuteW=3", STATUS_NO_MEMORY},
    };
    for (const Case& item : Cases) {
        const Program program = StartedFaultyProgram(item.plan);
        ASSERT_TRUE(program.PostCommand(OpenSettingsCommand));
        EXPECT_EQ(program.WaitForExit(), item.exitCode) << item.plan;
    }
}

TEST_F(RunningFaultsTest, RefusedShortcutIsAWarning) {
    const TrayRecorder recorder;
    const Program program = StartedFaultyProgram("CoCreateInstance");
    ASSERT_TRUE(program.SendCommand(StartWithWindowsCommand));
    EXPECT_EQ(WaitForBalloon(recorder).infoFlags, static_cast<DWORD>(NIIF_WARNING));
    EXPECT_FALSE(PathExists(StartupShortcut()));
}

// Windows of programs with higher privileges refuse every request.
TEST_F(RunningFaultsTest, RefusedRequestsAreRepeatedAndDisturbNothing) {
    ASSERT_TRUE(WriteSettings("Target 500 400\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target", .width = 300, .height = 200});
    // Each pass resizes and pins.
    const Program program = StartedFaultyProgram("SetWindowPos@1-5");
    EXPECT_TRUE(BecomesTopmost(target));
    EXPECT_EQ(CountOf("SetWindowPos failed"), 5U);
    EXPECT_TRUE(WaitUntil([target] { return WindowSize(target).cx == 500; }));
}

// The sign-in screen and system prompts take over the screen for a while.
TEST_F(RunningFaultsTest, WindowsArePinnedAgainWhenTheDesktopComesBack) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND first = actor.Create({.title = L"Target"});
    // The first pass succeeds; the passes that find windows again are refused at first.
    const Program program = StartedFaultyProgram("EnumWindows@2-5,SetWindowPos@2-3");
    ASSERT_TRUE(IsTopmost(first));
    const HWND second = actor.Create({.title = L"Target 2"});
    EXPECT_TRUE(BecomesTopmost(second));
    EXPECT_EQ(CountOf("EnumWindows failed"), 4U);
    EXPECT_EQ(CountOf("SetWindowPos failed"), 2U);
    EXPECT_TRUE(IsTopmost(first));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_FALSE(IsTopmost(first));
    EXPECT_FALSE(IsTopmost(second));
}

// A forgotten window would stay on top for good.
TEST_F(RunningFaultsTest, NothingIsForgottenWhileTheDesktopIsAway) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedFaultyProgram("EnumWindows@2-,GetForegroundWindow,GetCursorPos");
    ASSERT_TRUE(IsTopmost(target));
    ASSERT_TRUE(WaitUntil([] { return CountOf("EnumWindows failed") >= 3; })) << "passes go on";
    ASSERT_NE(OpenMenu(program), nullptr);
    EXPECT_TRUE(DismissMenu(program));
    EXPECT_GT(CountOf("GetForegroundWindow failed"), 0U);
    EXPECT_EQ(CountOf("GetCursorPos failed"), 1U);
    EXPECT_TRUE(IsTopmost(target));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(CountOf("EnumWindows passed"), 1U);
    EXPECT_FALSE(IsTopmost(target)) << "was remembered throughout";
}

TEST_F(RunningFaultsTest, MenuOpensInTheCornerWithoutACursor) {
    const Program program = StartedFaultyProgram("GetCursorPos");
    const HWND menu = OpenMenu(program);
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(WindowRect(menu).left, 0);
    EXPECT_EQ(WindowRect(menu).top, 0);
    EXPECT_EQ(CountOf("GetCursorPos failed"), 1U);
    EXPECT_TRUE(DismissMenu(program));
}

TEST_F(RunningFaultsTest, MenuThatCannotBeCreatedChangesNothing) {
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedFaultyProgram("CreatePopupMenu@1");
    EXPECT_EQ(Answer(program.ControlWindow(), TrayMessage, 1, WM_LBUTTONUP), 0);
    EXPECT_EQ(CountOf("CreatePopupMenu failed"), 1U);
    EXPECT_TRUE(MenuWindows(program).empty());
    EXPECT_TRUE(sentinel.WaitForTimedPass());
    ASSERT_NE(OpenMenu(program), nullptr) << "the next menu can be created";
    EXPECT_TRUE(DismissMenu(program));
}

TEST_F(RunningFaultsTest, AboutThatCannotBeCreatedLeavesTheTrayUsable) {
    // The first class and window are the control window's.
    for (const std::string function : {"RegisterClassW", "CreateWindowExW"}) {
        SCOPED_TRACE(function);
        ForgetRecordedCalls();
        const Program program = StartedFaultyProgram(function + "@2");
        ASSERT_TRUE(program.SendCommand(AboutCommand));
        EXPECT_EQ(CountOf(function + " failed"), 1U);
        EXPECT_EQ(AboutDialog(program), nullptr);
        EXPECT_NE(IsWindowEnabled(program.ControlWindow()), FALSE);
        EXPECT_NE(OpenAbout(program), nullptr) << "the next dialog can be created";
        EXPECT_EQ(program.ExitByCommand(), 0U);
    }
}

TEST_F(RunningFaultsTest, AboutWithoutItsLibrariesShowsAPlainDialogOfUnknownVersion) {
    const Program program = StartedFaultyProgram("LoadLibraryExW");
    const HWND dialog = OpenAbout(program);
    ASSERT_NE(dialog, nullptr);
    EXPECT_GE(CountOf("LoadLibraryExW failed"), 3U);
    EXPECT_EQ(ControlText(dialog, AboutBodyId), L"Morvane\n\nVersion: ?");
    PostMessageW(dialog, WM_CLOSE, 0, 0);
    EXPECT_TRUE(AboutCloses(program));
}

}  // namespace
}  // namespace morvane::test
