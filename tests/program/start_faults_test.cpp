// Starts and switches when the platform refuses what they need.

#include <algorithm>

#include "program/faulty_scene.h"

namespace morvane::test {
namespace {

using StartFaultsTest = ProgramTest;

// The tests below rely on both.
TEST_F(StartFaultsTest, ProgramWithoutFaultsRunsAndUnknownFaultsStopIt) {
    {
        const Program program = StartedFaultyProgram("SetTimer@0");
        EXPECT_EQ(program.ExitByCommand(), 0U);
    }
    EXPECT_EQ(RecordedCalls(), std::vector<std::string>{"SetTimer passed"});
    for (const char* plan : {"NoSuchFunction", "SetTimer@", "SetTimer@x", "SetTimer,,"}) {
        EXPECT_EQ(RunFaultyProgram(plan), PlanFailed) << plan;
    }
}

TEST_F(StartFaultsTest, WithoutComNothingIsDone) {
    const TrayRecorder recorder;
    ASSERT_EQ(RunProgram(L"--install-startup"), 0U);
    for (const wchar_t* arguments :
         {L"", L"--install-startup", L"--remove-startup", L"--remove-data"}) {
        EXPECT_EQ(RunFaultyProgram("CoInitializeEx,CoUninitialize@0", arguments), 1U) << arguments;
        EXPECT_EQ(RecordedCalls(), std::vector<std::string>{"CoInitializeEx failed"})
            << arguments << ": COM was never entered";
    }
    EXPECT_FALSE(PathExists(DataFolder()));
    EXPECT_TRUE(PathExists(StartupShortcut())) << "the switch did nothing";
    EXPECT_TRUE(recorder.Calls().empty());
}

constexpr const char* ComIsLeft = "CoUninitialize passed";
constexpr const char* MutexIsClosed = "CloseHandle passed";

// The last two recorded calls.
std::vector<std::string> LastRecordedCalls() {
    const std::vector<std::string> calls = RecordedCalls();
    return {calls.end() - static_cast<std::ptrdiff_t>(std::min<std::size_t>(calls.size(), 2)),
            calls.end()};
}

// No other instance starts while the mutex exists, so COM must be done with before it goes.
TEST_F(StartFaultsTest, ComIsLeftBeforeTheMutexUnlessAnotherInstanceHasIt) {
    const std::string plan = "CoUninitialize@0,CloseHandle@0";
    const TrayRecorder recorder;
    {
        const Program other = StartedProgram();
        EXPECT_EQ(RunFaultyProgram(plan), 0U);
        EXPECT_EQ(LastRecordedCalls(), (std::vector<std::string>{MutexIsClosed, ComIsLeft}));
        EXPECT_EQ(other.ExitByCommand(), 0U);
    }
    const Program program = StartedFaultyProgram(plan);
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(LastRecordedCalls(), (std::vector<std::string>{ComIsLeft, MutexIsClosed}));
}

TEST_F(StartFaultsTest, EverySwitchLeavesCom) {
    for (const wchar_t* argument : {L"--install-startup", L"--remove-startup", L"--remove-data"}) {
        EXPECT_EQ(RunFaultyProgram("CoUninitialize@0", argument), 0U) << argument;
        EXPECT_EQ(RecordedCalls(), std::vector<std::string>{ComIsLeft}) << argument;
    }
}

TEST_F(StartFaultsTest, RefusedMutexClassAndWindowEndTheStartSilently) {
    const struct {
        std::string function;
        DWORD exitCode;
        std::vector<std::string> callsAfterIt;
    } cases[] = {
        {"CreateMutexW", 0, {ComIsLeft}},
        {"RegisterClassW", 3, {ComIsLeft, MutexIsClosed}},
        {"CreateWindowExW", 4, {ComIsLeft, MutexIsClosed}},
    };
    const TrayRecorder recorder;
    for (const auto& [function, exitCode, callsAfterIt] : cases) {
        SCOPED_TRACE(function);
        EXPECT_EQ(RunFaultyProgram(function + ",CoUninitialize@0,CloseHandle@0"), exitCode);
        std::vector<std::string> calls = {function + " failed"};
        calls.insert(calls.end(), callsAfterIt.begin(), callsAfterIt.end());
        EXPECT_EQ(RecordedCalls(), calls);
        EXPECT_FALSE(PathExists(DataFolder()));
    }
    EXPECT_TRUE(recorder.Calls().empty());
    // The process took its mutex with it.
    const Program program = StartedProgram();
    EXPECT_TRUE(program.IsRunning());
}

TEST_F(StartFaultsTest, WithoutATimerOnlyCommandsRunPasses) {
    using namespace std::chrono_literals;
    constexpr std::size_t Commands = 3;
    const HWND first = Window(L"Target");
    const Program program = StartedFaultyProgram("SetTimer", "Target\n");
    EXPECT_EQ(CountOf("SetTimer failed"), 1U);
    EXPECT_TRUE(IsTopmost(first)) << "pinned by the first pass";
    const HWND second = Window(L"Target 2");
    // The first command's pass takes longer than a timer's period. A tick that is due then would
    // come before the last command.
    Other().Hang(1200ms);
    for (std::size_t command = 0; command < Commands; ++command) {
        ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    }
    EXPECT_TRUE(IsTopmost(second));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(TopmostRequests(Other(), first), 1 + Commands);
    EXPECT_EQ(TopmostRequests(Other(), second), Commands);
    EXPECT_FALSE(IsTopmost(first));
    EXPECT_FALSE(IsTopmost(second));
}

// The loop ends as on a quit message, but the control window has not been destroyed.
TEST_F(StartFaultsTest, FailureOfTheMessageLoopReleasesTheWindows) {
    // Keeps the icon from the taskbar, where one that nobody removes would stay for later tests.
    const TrayRecorder recorder;
    const HWND target = Window(L"Target");
    WriteSettings("Target\n");
    EXPECT_EQ(RunFaultyProgram("GetMessageW"), 0U);
    EXPECT_EQ(CountOf("GetMessageW failed"), 1U);
    EXPECT_GT(TopmostRequests(Other(), target), 0U);
    EXPECT_FALSE(IsTopmost(target));
    // It is left to the taskbar, which drops it when the pointer moves over it.
    const std::vector<TrayCall> calls = recorder.Calls();
    ASSERT_EQ(calls.size(), 1U) << "the icon was removed";
    EXPECT_EQ(calls.front().message, static_cast<DWORD>(NIM_ADD));
}

TEST_F(StartFaultsTest, ShortcutThatCannotBeMadeFailsTheSwitch) {
    for (const char* function :
         {"SHGetKnownFolderPath", "GetModuleFileNameW", "CoCreateInstance"}) {
        EXPECT_EQ(RunFaultyProgram(function, L"--install-startup"), 2U) << function;
        EXPECT_EQ(CountOf(std::string(function) + " failed"), 1U) << function;
        EXPECT_FALSE(PathExists(StartupShortcut())) << function;
    }
}

TEST_F(StartFaultsTest, ShortcutThatCannotBeRemovedFailsNothing) {
    ASSERT_EQ(RunProgram(L"--install-startup"), 0U);
    EXPECT_EQ(RunFaultyProgram("DeleteFileW", L"--remove-startup"), 0U);
    EXPECT_EQ(CountOf("DeleteFileW failed"), 1U);
    EXPECT_TRUE(PathExists(StartupShortcut()));
    EXPECT_EQ(RunFaultyProgram("SHGetKnownFolderPath", L"--remove-startup"), 0U);
    EXPECT_TRUE(PathExists(StartupShortcut()));
}

TEST_F(StartFaultsTest, RemovalThatGetsStuckFailsTheSwitch) {
    for (const char* plan :
         {"SHGetFolderPathW", "RemoveDirectoryW", "DeleteFileW@2-", "FindFirstFileW"}) {
        ResetProfile();
        WriteSettings("Target\n");
        ASSERT_EQ(RunProgram(L"--install-startup"), 0U);
        const std::wstring folder = DataFolder();
        EXPECT_EQ(RunFaultyProgram(plan, L"--remove-data"), 2U) << plan;
        EXPECT_TRUE(PathExists(folder)) << plan;
        EXPECT_FALSE(PathExists(StartupShortcut())) << plan << ": removed first";
        EXPECT_EQ(RunProgram(L"--remove-data"), 0U) << plan << ": works when repeated";
        EXPECT_FALSE(PathExists(folder)) << plan;
    }
}

}  // namespace
}  // namespace morvane::test
