// Runs the tests of the unpacked kit on this machine and writes report.txt and report.xml.
// Everybody who has Windows can do that, without any tools.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/owners.h"
#include "base/win.h"
#include "kit/console.h"
#include "kit/level_run.h"
#include "kit/machine.h"
#include "kit/report.h"
#include "kit/running_program.h"
#include "kit/sandbox.h"
#include "kit/user_state.h"
#include "settings/text.h"
#include "support/notepad.h"
#include "support/test_environment.h"
#include "support/test_files.h"
#include "support/tray.h"

namespace morvane::kit {
namespace {

constexpr int WrongUse = 2;
constexpr int Refused = 3;
constexpr std::chrono::seconds PatienceForTheTaskbar{60};
constexpr const wchar_t* InstanceMutex = L"Local\\Morvane_SingleInstance";
// Of all sessions, as a user can have several.
constexpr const wchar_t* RunMutex = L"Global\\MorvaneVerify";
constexpr std::string_view EveryTest = "*";

struct Options {
    bool here = false;
    bool sandbox = false;
    std::string only{EveryTest};
};

// Set by the user, and by the run when everything has been put back.
HANDLE stopEvent = nullptr;
HANDLE endEvent = nullptr;

// Once it returns, Windows ends a program whose window was closed.
BOOL WINAPI OnControl(DWORD kind) {
    SetEvent(stopEvent);
    if (kind != CTRL_C_EVENT && kind != CTRL_BREAK_EVENT) {
        WaitForSingleObject(endEvent, INFINITE);
    }
    return TRUE;
}

std::optional<Options> ReadOptions(int count, wchar_t** arguments) {
    constexpr std::wstring_view Only = L"/only:";
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::wstring_view argument = arguments[i];
        if (argument == L"/here") {
            options.here = true;
        } else if (argument == L"/sandbox") {
            options.sandbox = true;
        } else if (argument.starts_with(Only)) {
            options.only = WideToUtf8(argument.substr(Only.size()));
        } else {
            return std::nullopt;
        }
    }
    return options;
}

std::wstring ParentOf(const std::wstring& path) {
    return path.substr(0, path.find_last_of(L'\\'));
}

int Refuse(const std::string& why) {
    std::printf("%s\n", why.c_str());
    return Refused;
}

bool MorvaneRuns() {
    return static_cast<bool>(KernelHandle(OpenMutexW(SYNCHRONIZE, FALSE, InstanceMutex)));
}

constexpr const char* WhatIsTouched =
    "This is not a disposable machine, so nothing was run.\n\n"
    "Open sandbox.cmd: it runs the tests in Windows Sandbox, which is thrown away afterwards.\n\n"
    "To run them here, use \".\\verify.cmd /here\". For some minutes they move the pointer, press\n"
    "keys, open and close windows, Notepad's too: close your programs first, and leave the\n"
    "machine alone. They change, and put back at the end:\n\n"
    "    %APPDATA%\\Morvane and %APPDATA%\\MorvaneTests\n"
    "    the Startup folder of your Start menu\n"
    "    the work area of the screen\n"
    "    in HKCU\\Software\\Microsoft\\Windows\\CurrentVersion:\n"
    "        Explorer\\User Shell Folders and Explorer\\Shell Folders: AppData, Startup\n"
    "        Themes\\Personalize: AppsUseLightTheme\n"
    "        RunOnce: !MorvaneVerify\n\n"
    "Until then a copy is in %LOCALAPPDATA%\\Morvane-verify. If the run is killed, they are put\n"
    "back when you sign in again, or run verify.cmd again.\n";

bool WriteReport(const Kit& kit, const Report& report) {
    return test::WriteFileBytes(kit.folder + L"\\report.txt", PlainText(report)) &&
           test::WriteFileBytes(kit.folder + L"\\report.xml", JUnitXml(report));
}

void Run(const Kit& kit, const Level& level, const std::vector<Test>& tests, Report& report) {
    const std::string name = level.name;
    const std::string total = std::to_string(tests.size());
    std::size_t done = 0;
    std::size_t failed = CountOf(report, Outcome::Failed) + CountOf(report, Outcome::Error);
    Say(name + ": " + total + " tests");
    RunLevel(kit, level,
             {tests,
              [&](const Test& test) {
                  SayForNow(name + " " + std::to_string(done + 1) + " of " + total + ", " +
                            std::to_string(failed) + " failed  " + FullName(test));
              },
              [&](const Result& result) {
                  ++done;
                  report.results.push_back(result);
                  if (IsFailure(result.outcome)) {
                      ++failed;
                      Say(std::string(NameOf(result.outcome)) + "  " + FullName(result.test));
                  }
              }});
}

// After each level there is a report, in case the run is killed.
void RunAll(const Kit& kit, std::string_view only, Report& report) {
    for (const Level& level : Levels()) {
        const std::optional<std::vector<Test>> tests = TestsOf(kit, level, only);
        if (!tests || (tests->empty() && report.isWhole)) {
            report.troubles.push_back(std::string("the level ") + level.name + " lists no tests");
        } else if (!tests->empty()) {
            Run(kit, level, *tests, report);
        }
        Report unfinished = report;
        unfinished.troubles.emplace_back("the run did not finish");
        static_cast<void>(WriteReport(kit, unfinished));
    }
    if (WaitForSingleObject(kit.stop, 0) == WAIT_OBJECT_0) {
        report.troubles.emplace_back("stopped by the user");
    }
}

// An exit code if the run must not begin.
std::optional<int> PrepareUserState(bool here) {
    if (IsStateSaved()) {
        if (!RestoreUserState()) {
            return Refuse("What the last run changed cannot be put back from " +
                          WideToUtf8(SavedStateFolder()) + ".");
        }
        std::printf("What the last run changed has been put back.\n");
    }
    if (!here) {
        return Refuse(WhatIsTouched);
    }
    if (!test::NotepadProcesses().empty()) {
        return Refuse("Notepad is running: save what is in it and close it first.");
    }
    if (test::PathExists(test::TestFolder())) {
        return Refuse(WideToUtf8(test::TestFolder()) + " is in the way: rename or delete it.");
    }
    if (!SaveUserState()) {
        return Refuse("The settings and the Startup folder cannot be copied to " +
                      WideToUtf8(SavedStateFolder()) + ".");
    }
    return std::nullopt;
}

Report RunAndReport(const Kit& kit, std::string_view only) {
    Report report;
    report.isWhole = only == EveryTest;
    report.facts = Facts(kit);
    RECT workArea{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &workArea, 0);
    const Clock::time_point start = Clock::now();
    if (!test::WaitForTaskbar(PatienceForTheTaskbar)) {
        report.troubles.emplace_back("there is no taskbar");
    }
    RunAll(kit, only, report);
    report.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    SystemParametersInfoW(SPI_SETWORKAREA, 0, &workArea, 0);
    return report;
}

int Verify(const Kit& kit, const Options& options) {
    const KernelHandle onlyRun(CreateMutexW(nullptr, TRUE, RunMutex));
    if (!onlyRun || GetLastError() == ERROR_ALREADY_EXISTS) {
        return Refuse("The tests are running already.");
    }
    if (MorvaneRuns()) {
        return Refuse("Morvane is running: choose Exit in its menu first.");
    }
    // The profile, too, is changed only by what promises to put it back.
    SetEnvironmentVariableW(L"MORVANE_TEST_DISPOSABLE", L"1");
    const std::optional<int> refused =
        IsDisposable() ? std::nullopt : PrepareUserState(options.here);
    if (refused) {
        return *refused;
    }
    // A dark or locked screen shows no windows.
    SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED | ES_DISPLAY_REQUIRED);
    EndEverythingWithUs();
    Report report = RunAndReport(kit, options.only);
    static_cast<void>(WriteReport(kit, report));
    if (!IsDisposable() && !RestoreUserState()) {
        report.troubles.emplace_back("not everything was put back; run verify.cmd again");
    }
    const bool written = WriteReport(kit, report);
    Say(Summary(report));
    Say(written ? "The report is in report.txt and report.xml." : "The report cannot be written.");
    return written && IsGood(report) ? EXIT_SUCCESS : EXIT_FAILURE;
}

int Start(const Kit& kit, const Options& options) {
    const std::wstring missing = MissingFile(kit);
    if (!missing.empty()) {
        return Refuse(WideToUtf8(missing) + " is missing: unpack the whole archive again.");
    }
    return options.sandbox ? OpenSandbox(kit) : Verify(kit, options);
}

int Main(int count, wchar_t** arguments) {
    const std::optional<Options> options = ReadOptions(count, arguments);
    if (!options) {
        std::printf("usage: verify.cmd [/here] [/only:TESTS]\n");
        return WrongUse;
    }
    // Unbuffered, a console shows every character on its own.
    std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
    // The scaling is seen only by a program that is aware of it.
    SetProcessDPIAware();
    const InputMode input = IgnoreInput();
    const KernelHandle stop(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const KernelHandle end(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    stopEvent = stop.get();
    endEvent = end.get();
    SetConsoleCtrlHandler(OnControl, TRUE);
    const Kit kit{ParentOf(ParentOf(ProgramFile())), stop.get()};
    SetCurrentDirectoryW(kit.folder.c_str());
    const int code = Start(kit, *options);
    SetEvent(end.get());
    if (WaitForSingleObject(stop.get(), 0) != WAIT_OBJECT_0) {
        WaitForEnter();
    }
    return code;
}

}  // namespace
}  // namespace morvane::kit

// Called by the C runtime's start-up; no header declares it.
int wmain(int count, wchar_t** arguments);

int wmain(int count, wchar_t** arguments) {
    return morvane::kit::Main(count, arguments);
}
