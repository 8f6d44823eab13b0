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

// Owns one started Morvane.exe (MORVANE_TEST_PROGRAM). The destructor ends it: politely, then by
// force after a few seconds. The program works on the profile of this session, so callers start
// with MORVANE_REQUIRE_DISPOSABLE_PROFILE; starting it elsewhere throws std::logic_error.
class Program {
public:
    // Arguments as typed behind the program's name. Throws std::runtime_error when the process
    // cannot be started. Returns as soon as it runs, before it has done anything. The first start
    // waits for the session's taskbar, for a few seconds at most: not every session has one.
    explicit Program(const std::wstring& arguments = L"", const Environment& changes = {});

    // The same for a copy of the program that lies elsewhere.
    [[nodiscard]] static Program FromFile(const std::wstring& executable,
                                          const std::wstring& arguments = L"",
                                          const Environment& changes = {});

    // So many copies that begin together: all are there before the first of them runs.
    [[nodiscard]] static std::vector<Program> SeveralAtOnce(std::size_t count);

    // Starts the program with the session's user interface in another language, by the name of a
    // host locale ("ja_JP.UTF-8", which need not be installed). Under Wine only the host's
    // environment decides about that language: LC_ALL among the changes above has no effect.
    // Returns once the control window is complete; std::runtime_error when it does not come.
    [[nodiscard]] static Program UnderLocale(const std::string& locale);

    Program(Program&&) noexcept = default;
    Program& operator=(Program&&) = delete;
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    // Nothing when the process is still running after the timeout.
    [[nodiscard]] std::optional<DWORD> WaitForExit(
        std::chrono::milliseconds timeout = DefaultTimeout) const;
    [[nodiscard]] bool IsRunning() const;
    [[nodiscard]] DWORD ProcessId() const { return processId_; }

    // The message-only control window of this very process, once it exists and its creation is
    // complete (settings loaded, icon added, first pass done); null when it does not come.
    [[nodiscard]] HWND WaitForControlWindow(
        std::chrono::milliseconds timeout = DefaultTimeout) const;

    // The same without waiting; it may still be inside its creation.
    [[nodiscard]] HWND ControlWindow() const;

    // Menu commands as the tray menu delivers them, by identifier. Post returns at once; Send
    // returns when the command has been carried out, false when that takes longer.
    [[nodiscard]] bool PostCommand(WORD command) const;
    [[nodiscard]] bool SendCommand(WORD command,
                                   std::chrono::milliseconds timeout = DefaultTimeout) const;

    // Exit by the menu command, or by WM_CLOSE; the exit code, or nothing when it does not end.
    [[nodiscard]] std::optional<DWORD> ExitByCommand() const;
    [[nodiscard]] std::optional<DWORD> ExitByClose() const;

    // Ends the process as a crash would: it gets no chance to release or to remove anything. Its
    // tray icon, which Wine's taskbar would keep for good, is then removed on its behalf.
    void Kill() const;

private:
    explicit Program(ChildProcess child);

    KernelHandle process_;
    DWORD processId_ = 0;
};

// Starts the program with a switch and waits for its end; nothing when it does not end.
[[nodiscard]] std::optional<DWORD> RunProgram(const std::wstring& arguments,
                                              const Environment& changes = {});

}  // namespace morvane::test
