// Runs the tests of the unpacked kit on this machine and writes report.txt and report.xml.
// Everybody who has Windows can do that, without any tools.

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/owners.h"
#include "base/win.h"
#include "kit/level_run.h"
#include "kit/machine.h"
#include "kit/report.h"
#include "kit/running_program.h"
#include "kit/sandbox.h"
#include "kit/step.h"
#include "kit/user_state.h"
#include "settings/text.h"
#include "support/test_files.h"
#include "support/tray.h"

namespace morvane::kit {
namespace {

constexpr int Refused = 3;
constexpr std::chrono::seconds PatienceForTheTaskbar{60};
constexpr const wchar_t* InstanceMutex = L"Local\\Morvane_SingleInstance";

struct Options {
    bool here = false;
    bool sandbox = false;
    std::string only = "*";
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

std::wstring KitFolder() {
    std::array<wchar_t, 32'768> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return ParentOf(ParentOf(path.data()));
}

int Refuse(const char* why) {
    std::printf("%s\n", why);
    return Refused;
}

bool MorvaneRuns() {
    return static_cast<bool>(KernelHandle(OpenMutexW(SYNCHRONIZE, FALSE, InstanceMutex)));
}

constexpr const char* WhatIsTouched =
    "This is not a disposable machine, so nothing was run.\n\n"
    "Open sandbox.cmd: it runs the tests in Windows Sandbox, which is thrown away afterwards.\n\n"
    "To run them here, use \".\\verify.cmd /here\". For some minutes they move the pointer, press\n"
    "keys, open and close windows: close your programs first and leave the machine alone. They\n"
    "change, and put back at the end:\n\n"
    "    %APPDATA%\\Morvane\n"
    "    the Startup folder of your Start menu\n"
    "    HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders:\n"
    "        AppData, Startup\n"
    "    HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize:\n"
    "        AppsUseLightTheme\n\n"
    "Until then a copy is in the folder \"saved\" beside verify.cmd. If the run is killed, run\n"
    "verify.cmd again: it puts them back first.\n";

bool IsConsole(DWORD stream) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stream), &mode) != FALSE;
}

// A line that replaces the unfinished one about the running test.
void Say(const std::string& line) {
    std::printf(IsConsole(STD_OUTPUT_HANDLE) ? "\r%-79s\n" : "%s\n", line.c_str());
    static_cast<void>(std::fflush(stdout));
}

class Progress {
public:
    explicit Progress(std::size_t total) : total_(total) {}

    void Start(const char* level, const Test& test) const {
        if (IsConsole(STD_OUTPUT_HANDLE)) {
            const std::string name = FullName(test).substr(0, 40);
            std::printf("\r%4zu of %zu, %zu failed  %-7s %-40s", done_ + 1, total_, failed_, level,
                        name.c_str());
            static_cast<void>(std::fflush(stdout));
        }
    }

    void End(const Result& result) {
        ++done_;
        if (IsFailure(result.outcome)) {
            ++failed_;
            Say(std::string(NameOf(result.outcome)) + "  " + FullName(result.test));
        }
    }

private:
    std::size_t total_;
    std::size_t done_ = 0;
    std::size_t failed_ = 0;
};

struct Selection {
    const Level* level;
    std::vector<Test> all;
    std::vector<Test> chosen;
};

std::vector<Selection> Select(const Kit& kit, const std::string& only, Report& report) {
    std::vector<Selection> selections;
    for (const Level& level : Levels()) {
        Selection selection{&level, TestsOf(kit, level), {}};
        if (selection.all.empty()) {
            report.troubles.push_back(std::string("the level ") + level.name + " lists no tests");
        }
        std::copy_if(selection.all.begin(), selection.all.end(),
                     std::back_inserter(selection.chosen),
                     [&only](const Test& test) { return Matches(FullName(test), only); });
        report.all.insert(report.all.end(), selection.all.begin(), selection.all.end());
        selections.push_back(std::move(selection));
    }
    for (const Step& step : Steps()) {
        const std::string unknown = UnknownTests(step, report.all);
        if (!unknown.empty()) {
            report.troubles.push_back("no test is named " + unknown);
        }
    }
    return selections;
}

void RunAll(const Kit& kit, const std::string& only, Report& report) {
    const std::vector<Selection> selections = Select(kit, only, report);
    std::size_t total = 0;
    for (const Selection& selection : selections) {
        total += selection.chosen.size();
    }
    Progress progress(total);
    for (const Selection& selection : selections) {
        if (selection.chosen.empty()) {
            continue;
        }
        Say(std::string(selection.level->name) + ": " + std::to_string(selection.chosen.size()) +
            " tests");
        RunLevel(kit, *selection.level,
                 {selection.all, selection.chosen,
                  [&](const Test& test) { progress.Start(selection.level->name, test); },
                  [&](const Result& result) {
                      progress.End(result);
                      report.results.push_back(result);
                  }});
    }
    if (WaitForSingleObject(kit.stop, 0) == WAIT_OBJECT_0) {
        report.troubles.emplace_back("stopped by the user");
    }
}

bool WriteReport(const Kit& kit, const Report& report) {
    return test::WriteFileBytes(kit.folder + L"\\report.txt", PlainText(report)) &&
           test::WriteFileBytes(kit.folder + L"\\report.xml", JUnitXml(report));
}

// An exit code if the run must not begin.
std::optional<int> PrepareUserState(const std::wstring& saved, bool here) {
    const Saved state = StateIn(saved);
    if (state == Saved::SomebodyElses) {
        return Refuse("The folder \"saved\" is of another user or machine: run verify.cmd there.");
    }
    if (state == Saved::Ours) {
        if (!RestoreUserState(saved)) {
            return Refuse("What the last run changed cannot be put back from \"saved\".");
        }
        std::printf("What the last run changed has been put back.\n");
    }
    if (!here) {
        return Refuse(WhatIsTouched);
    }
    if (!SaveUserState(saved)) {
        return Refuse("The settings and the Startup folder cannot be copied to \"saved\".");
    }
    return std::nullopt;
}

int Verify(const Kit& kit, const Options& options) {
    const std::wstring saved = kit.folder + L"\\saved";
    if (MorvaneRuns()) {
        return Refuse("Morvane is running: choose Exit in its menu first.");
    }
    // The profile, too, is changed only by what promises to put it back.
    SetEnvironmentVariableW(L"MORVANE_TEST_DISPOSABLE", L"1");
    const std::optional<int> refused =
        IsDisposable() ? std::nullopt : PrepareUserState(saved, options.here);
    if (refused) {
        return *refused;
    }
    Report report;
    report.facts = Facts(kit);
    RECT workArea{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &workArea, 0);
    const Clock::time_point start = Clock::now();
    if (!test::WaitForTaskbar(PatienceForTheTaskbar)) {
        report.troubles.emplace_back("there is no taskbar");
    }
    RunAll(kit, options.only, report);
    report.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    SystemParametersInfoW(SPI_SETWORKAREA, 0, &workArea, 0);
    if (!IsDisposable() && !RestoreUserState(saved)) {
        report.troubles.emplace_back("not everything was put back; run verify.cmd again");
    }
    const bool written = WriteReport(kit, report);
    Say(Summary(report));
    Say(written ? "The report is in report.txt and report.xml." : "The report cannot be written.");
    return written && IsGood(report) ? EXIT_SUCCESS : EXIT_FAILURE;
}

// A window that was opened for this program alone would be gone before anybody could read it.
void WaitForEnter() {
    if (WaitForSingleObject(stopEvent, 0) != WAIT_OBJECT_0 && IsConsole(STD_INPUT_HANDLE) &&
        IsConsole(STD_OUTPUT_HANDLE)) {
        Say("Press Enter.");
        static_cast<void>(std::getchar());
    }
}

int Run(int count, wchar_t** arguments) {
    const std::optional<Options> options = ReadOptions(count, arguments);
    if (!options) {
        std::printf("usage: verify.cmd [/here] [/only:TESTS]\n");
        return 2;
    }
    // Unbuffered, a console shows every character on its own.
    std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
    // The scaling is seen only by a program that is aware of it.
    SetProcessDPIAware();
    const KernelHandle stop(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const KernelHandle end(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    stopEvent = stop.get();
    endEvent = end.get();
    SetConsoleCtrlHandler(OnControl, TRUE);
    const Kit kit{KitFolder(), stop.get()};
    SetCurrentDirectoryW(kit.folder.c_str());
    const int code = options->sandbox ? OpenSandbox(kit) : Verify(kit, *options);
    SetEvent(end.get());
    WaitForEnter();
    return code;
}

}  // namespace
}  // namespace morvane::kit

// Called by the C runtime's start-up; no header declares it.
int wmain(int count, wchar_t** arguments);

int wmain(int count, wchar_t** arguments) {
    return morvane::kit::Run(count, arguments);
}
