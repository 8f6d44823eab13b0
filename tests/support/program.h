#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/owners.h"
#include "base/win.h"
#include "support/child_process.h"
#include "support/wait.h"

namespace morvane::test {

// The file that Program starts: the shipped Morvane.exe (MORVANE_TEST_PROGRAM), or, while a
// TrayRecorder lives, the same program with exchanged imports (MORVANE_TEST_FAULTY_PROGRAM).
[[nodiscard]] std::wstring ProgramPath();

// Owns a running program. The destructor asks it to exit, and kills it after a few seconds. The
// program uses the profile of this session, so callers start with
// MORVANE_REQUIRE_DISPOSABLE_PROFILE; starting it in any other profile throws std::logic_error.
class Program {
public:
    // Arguments as typed after the program's name. Throws std::runtime_error if the process cannot
    // be started. Returns as soon as it runs, before it has done anything. The first start waits a
    // few seconds at most for the session's taskbar: not every session has one.
    explicit Program(const std::wstring& arguments = L"", const Environment& changes = {});

    // Starts a copy of the program from another place.
    [[nodiscard]] static Program FromFile(const std::wstring& executable,
                                          const std::wstring& arguments = L"",
                                          const Environment& changes = {});

    // Starts several copies together: all processes exist before the first one runs.
    [[nodiscard]] static std::vector<Program> SeveralAtOnce(std::size_t count);

    Program(Program&&) noexcept = default;
    Program& operator=(Program&&) = delete;
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    // Nothing if the process is still running after the timeout.
    [[nodiscard]] std::optional<DWORD> WaitForExit(
        std::chrono::milliseconds timeout = DefaultTimeout) const;
    [[nodiscard]] bool IsRunning() const;
    [[nodiscard]] DWORD ProcessId() const { return processId_; }

    // This process's message-only control window, once its creation is complete (settings loaded,
    // icon added, first pass done); null if it does not appear.
    [[nodiscard]] HWND WaitForControlWindow(
        std::chrono::milliseconds timeout = DefaultTimeout) const;

    // The same without waiting; its creation may still be in progress.
    [[nodiscard]] HWND ControlWindow() const;

    // Menu commands as the tray menu delivers them, by identifier. Post returns at once; Send
    // returns once the command has been carried out, or false if that takes too long.
    [[nodiscard]] bool PostCommand(WORD command) const;
    [[nodiscard]] bool SendCommand(WORD command,
                                   std::chrono::milliseconds timeout = DefaultTimeout) const;

    // Exit by the menu command, or by WM_CLOSE; the exit code, or nothing if it does not end.
    [[nodiscard]] std::optional<DWORD> ExitByCommand() const;
    [[nodiscard]] std::optional<DWORD> ExitByClose() const;

    // Ends the process as a crash would, with no chance to clean up. The taskbar of Wine 8.0 would
    // keep its tray icon forever, so the icon is then removed on its behalf.
    void Kill() const;

private:
    explicit Program(ChildProcess child);

    KernelHandle process_;
    DWORD processId_ = 0;
};

// Starts the program with a switch and waits for it to end; nothing if it does not.
[[nodiscard]] std::optional<DWORD> RunProgram(const std::wstring& arguments,
                                              const Environment& changes = {});

}  // namespace morvane::test
