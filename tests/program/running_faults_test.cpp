// The running program continues when the platform refuses what it needs.

#include "program/faulty_scene.h"
#include "program/menu_scene.h"
#include "support/notepad.h"

namespace morvane::test {
namespace {

using RunningFaultsTest = ProgramTest;

TEST_F(RunningFaultsTest, ShellThatRefusesIconAndBalloonsStopsNoCommand) {
    const TrayRecorder recorder;
    const HWND target = Window(L"Target");
    const Program program = StartedFaultyProgram("Shell_NotifyIconW", "Target\n");
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

TEST_F(RunningFaultsTest, SettingsThatCannotBeSavedStayAsTheyAreAndCountAgain) {
    const struct {
        std::string function;
        std::optional<std::string> file;
        bool pinsTarget;
    } cases[] = {
        {"CreateDirectoryW", std::nullopt, false}, {"CreateFileW", std::nullopt, false},
        {"CreateFileW", "Other\n", false},         {"CreateFileW", "# mine\r\nTarget\r\n", true},
        {"SetEndOfFile", "Target\n", true},        {"SHGetFolderPathW", "Target\n", false},
    };
    const TrayRecorder recorder;
    const HWND target = Window(L"Target");
    for (const auto& item : cases) {
        SCOPED_TRACE(item.function + " with " + item.file.value_or("no file"));
        ResetProfile();
        const Program program = StartedFaultyProgram(item.function, item.file.value_or(""));
        const std::string failure = item.function + " failed";
        const std::size_t atStart = CountOf(failure);
        EXPECT_EQ(IsTopmost(target), item.pinsTarget);
        ASSERT_TRUE(SendRowCommand(program, TogglePinCommand, L"Target"));
        EXPECT_GT(CountOf(failure), atStart);
        ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
        EXPECT_EQ(IsTopmost(target), item.pinsTarget) << "the pass read the file";
        EXPECT_EQ(program.ExitByCommand(), 0U);
        EXPECT_EQ(ReadSettings(), item.file);
        EXPECT_EQ(PathExists(DataFolder()), item.function != "CreateDirectoryW");
        EXPECT_TRUE(Balloons(recorder).empty());
    }
}

// The file is rewritten in place, so what it held is lost when the disk is full.
TEST_F(RunningFaultsTest, DiskThatFillsUpDuringASaveCutsTheFile) {
    const std::string whole = SettingsText(false, "Target\n");
    const HWND target = Window(L"Target");
    for (const std::size_t taken : {std::size_t{0}, std::size_t{20}, whole.size() - 3}) {
        SCOPED_TRACE(taken);
        const Program program =
            StartedFaultyProgram("WriteFile=" + std::to_string(taken), "Target\n");
        ASSERT_TRUE(IsTopmost(target));
        ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
        EXPECT_EQ(ReadSettings(), whole.substr(0, taken));
        EXPECT_TRUE(program.SendCommand(ApplyNowCommand)) << "still running";
        EXPECT_EQ(program.ExitByCommand(), 0U);
        EXPECT_EQ(ReadSettings(), whole.substr(0, taken)) << "nothing is written at the end";
    }
}

// The plans fail all reads at the start and the first one after it; no timer adds any.
TEST_F(RunningFaultsTest, FileThatCannotBeReadMeansNoEntriesUntilItCan) {
    const HWND target = Window(L"Target");
    for (const std::string plan : {"ReadFile@1-3", "SHGetFolderPathW@1-5"}) {
        SCOPED_TRACE(plan);
        const std::string function = plan.substr(0, plan.find('@'));
        const Program program = StartedFaultyProgram(plan + ",SetTimer", "Target\n");
        ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
        EXPECT_FALSE(IsTopmost(target));
        EXPECT_EQ(CountOf(function + " passed"), 0U) << "no longer failing";
        ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
        EXPECT_TRUE(IsTopmost(target));
        EXPECT_GT(CountOf(function + " passed"), 0U);
        EXPECT_EQ(ReadSettings(), "Target\n");
        EXPECT_EQ(program.ExitByCommand(), 0U);
    }
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
        const Program program = StartedFaultyProgram(item.plan, "First\nSecond\t500\t400\n");
        ASSERT_GT(CountOf(item.failure), 0U);
        ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
        EXPECT_EQ(ReadSettings(), SettingsText(false, ""));
        EXPECT_EQ(program.ExitByCommand(), 0U);
    }
}

TEST_F(RunningFaultsTest, EditorIsFoundWithoutTheSystemFolderAndMayFailToStart) {
    const TrayRecorder recorder;
    const Program program = StartedFaultyProgram("GetSystemDirectoryW,ShellExecuteW@2");
    const std::wstring path = SettingsPath();
    const std::string parameters = '"' + std::string(path.begin(), path.end()) + '"';
    std::vector<std::string> expected;
    for (const std::string outcome : {"passed", "failed"}) {
        ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
        expected.insert(expected.end(), {"GetSystemDirectoryW failed", "ShellExecuteW " + outcome,
                                         "open", "notepad.exe", parameters});
        EXPECT_EQ(RecordedCalls(), expected);
        EXPECT_EQ(NotepadProcesses().size(), outcome == "passed" ? 1U : 0U) << outcome;
        EndNotepads();
    }
    EXPECT_TRUE(Balloons(recorder).empty());
    EXPECT_TRUE(program.SendCommand(ApplyNowCommand));
}

// Nothing catches the runtime library's exceptions, and the bytes past a buffer may be the return
// address.
TEST_F(RunningFaultsTest, ThrownExceptionOrOverrunBufferEndsTheProgramAtOnce) {
    // Keeps the icon from the taskbar, where one that nobody removes would stay for later tests.
    const TrayRecorder recorder;
    constexpr DWORD StackBufferOverrun = 0xC0000409;
    struct Case {
        const char* plan;
        DWORD exitCode;
    };
    constexpr Case Cases[] = {
        {"GetSystemDirectoryW=16", StackBufferOverrun},
        {"GetSystemDirectoryW=8", StackBufferOverrun},
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

// There is nothing sensible left to do; the next instance finds the windows left on top.
TEST_F(RunningFaultsTest, WithoutMemoryTheProgramEndsAtOnce) {
    // Keeps the icon from the taskbar, where one that nobody removes would stay for later tests.
    const TrayRecorder recorder;
    const HWND target = Window(L"Target");
    // More than the start needs; the passes soon request the rest.
    const Program program = StartedFaultyProgram("malloc@60", "Target\n");
    EXPECT_TRUE(IsTopmost(target));
    EXPECT_EQ(program.WaitForExit(), STATUS_NO_MEMORY);
    EXPECT_EQ(CountOf("malloc failed"), 1U);
    EXPECT_EQ(ReadSettings(), "Target\n");
}

// The sign-in screen and system prompts take over the screen for a while, and windows of programs
// with higher privileges refuse every request.
TEST_F(RunningFaultsTest, RefusedRequestsAreRepeatedWhenTheDesktopComesBack) {
    const HWND first = Window(L"Target");
    // The first pass sizes and pins; the passes that find windows again are refused at first.
    const Program program =
        StartedFaultyProgram("EnumWindows@2-5,SetWindowPos@3-8", "Target 500 400\n");
    ASSERT_TRUE(IsTopmost(first));
    const HWND second = Window(L"Target 2");
    EXPECT_TRUE(BecomesTopmost(second));
    EXPECT_TRUE(WaitUntil([second] { return WindowSize(second).cx == 500; }));
    EXPECT_EQ(CountOf("EnumWindows failed"), 4U);
    EXPECT_EQ(CountOf("SetWindowPos failed"), 6U);
    EXPECT_TRUE(IsTopmost(first));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_FALSE(IsTopmost(first));
    EXPECT_FALSE(IsTopmost(second));
}

// A forgotten window would stay on top for good.
TEST_F(RunningFaultsTest, NothingIsForgottenWhileTheDesktopIsAway) {
    const HWND target = Window(L"Target");
    const Program program =
        StartedFaultyProgram("EnumWindows@2-,GetForegroundWindow,GetCursorPos", "Target\n");
    ASSERT_TRUE(IsTopmost(target));
    ASSERT_TRUE(WaitUntil([] { return CountOf("EnumWindows failed") >= 3; })) << "passes go on";
    const HWND menu = OpenMenu(program);
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(WindowRect(menu).left, 0);
    EXPECT_EQ(WindowRect(menu).top, 0);
    EXPECT_TRUE(DismissMenu(program));
    EXPECT_GT(CountOf("GetForegroundWindow failed"), 0U);
    EXPECT_EQ(CountOf("GetCursorPos failed"), 1U);
    EXPECT_TRUE(IsTopmost(target));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(CountOf("EnumWindows passed"), 1U);
    EXPECT_FALSE(IsTopmost(target)) << "was remembered throughout";
}

TEST_F(RunningFaultsTest, MenuThatCannotBeCreatedChangesNothing) {
    const Sentinel sentinel(Other());
    const Program program = StartedFaultyProgram("CreatePopupMenu@1", "Sentinel\n");
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
}

}  // namespace
}  // namespace morvane::test
