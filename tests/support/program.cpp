#include "support/program.h"

#include <stdexcept>
#include <utility>

#include "support/test_environment.h"
#include "support/tray.h"
#include "support/tray_relay.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

constexpr const wchar_t* ControlWindowClass = L"MorvaneHiddenWindow";
constexpr WORD ExitCommand = 1004;
constexpr std::chrono::milliseconds PoliteTimeout{3'000};
constexpr std::chrono::milliseconds TaskbarTimeout{5'000};

void PrepareSession() {
    RequireDisposable();
    // The shell lives at least as long as this process, so one look is enough, even without one.
    static const bool taskbarReady = WaitForTaskbar(TaskbarTimeout);
    static_cast<void>(taskbarReady);
}

ChildProcess StartSafely(const std::wstring& executable, const std::wstring& arguments,
                         const Environment& changes, Begin begin = Begin::AtOnce) {
    PrepareSession();
    ChildProcess child = StartProcess(executable, arguments, changes, {}, begin);
    if (!child.process) {
        throw std::runtime_error("the program does not start");
    }
    return child;
}

}  // namespace

std::wstring ProgramPath() {
    return RequiredPath(IsTrayRecorded() ? L"MORVANE_TEST_FAULTY_PROGRAM"
                                         : L"MORVANE_TEST_PROGRAM");
}

Program::Program(const std::wstring& arguments, const Environment& changes)
    : Program(StartSafely(ProgramPath(), arguments, changes)) {}

Program::Program(ChildProcess child) : process_(std::move(child.process)), processId_(child.id) {}

Program Program::FromFile(const std::wstring& executable, const std::wstring& arguments,
                          const Environment& changes) {
    return Program(StartSafely(executable, arguments, changes));
}

std::vector<Program> Program::SeveralAtOnce(std::size_t count) {
    const std::wstring executable = ProgramPath();
    std::vector<KernelHandle> threads;
    std::vector<Program> programs;
    for (std::size_t i = 0; i < count; ++i) {
        ChildProcess child = StartSafely(executable, L"", {}, Begin::WhenResumed);
        threads.push_back(std::move(child.thread));
        programs.push_back(Program(std::move(child)));
    }
    for (const KernelHandle& thread : threads) {
        ResumeThread(thread.get());
    }
    return programs;
}

Program::~Program() {
    if (!process_ || !IsRunning()) {
        return;
    }
    const HWND control = ControlWindow();
    if (control == nullptr || PostMessageW(control, WM_CLOSE, 0, 0) == FALSE ||
        !WaitForExit(PoliteTimeout)) {
        Kill();
    }
}

std::optional<DWORD> Program::WaitForExit(std::chrono::milliseconds timeout) const {
    DWORD exitCode = 0;
    if (!WaitForObject(process_.get(), timeout) ||
        GetExitCodeProcess(process_.get(), &exitCode) == FALSE) {
        return std::nullopt;
    }
    return exitCode;
}

bool Program::IsRunning() const {
    return WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT;
}

HWND Program::ControlWindow() const {
    HWND window = nullptr;
    do {
        window = FindWindowExW(HWND_MESSAGE, window, ControlWindowClass, nullptr);
    } while (window != nullptr && ProcessOf(window) != processId_);
    return window;
}

HWND Program::WaitForControlWindow(std::chrono::milliseconds timeout) const {
    HWND control = nullptr;
    // A message sent too early would be answered during creation, whenever that waits for another
    // program. The process counts as idle only once its message loop has nothing to do.
    static_cast<void>(WaitUntil(
        [&] {
            control = ControlWindow();
            return !IsRunning() || (control != nullptr && WaitForInputIdle(process_.get(), 0) == 0);
        },
        timeout));
    return IsRunning() ? control : nullptr;
}

bool Program::PostCommand(WORD command) const {
    return PostMessageW(ControlWindow(), WM_COMMAND, command, 0) != FALSE;
}

bool Program::SendCommand(WORD command, std::chrono::milliseconds timeout) const {
    DWORD_PTR result = 0;
    return SendMessageTimeoutW(ControlWindow(), WM_COMMAND, command, 0, SMTO_NORMAL,
                               static_cast<UINT>(timeout.count()), &result) != 0;
}

std::optional<DWORD> Program::ExitByCommand() const {
    return PostCommand(ExitCommand) ? WaitForExit() : std::nullopt;
}

std::optional<DWORD> Program::ExitByClose() const {
    return PostMessageW(ControlWindow(), WM_CLOSE, 0, 0) != FALSE ? WaitForExit() : std::nullopt;
}

void Program::Kill() const {
    const HWND control = ControlWindow();
    TerminateProcess(process_.get(), 1);
    static_cast<void>(WaitForExit(PoliteTimeout));
    if (control != nullptr) {
        RemoveTrayIconOf(control);
    }
}

std::optional<DWORD> RunProgram(const std::wstring& arguments, const Environment& changes) {
    const Program program(arguments, changes);
    return program.WaitForExit();
}

}  // namespace morvane::test
