#pragma once

#include <gtest/gtest.h>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/owners.h"
#include "base/win.h"
#include "base/win_shell.h"
#include "support/actor.h"
#include "support/program.h"
#include "support/settings_header.h"
#include "support/shortcut.h"
#include "support/test_environment.h"
#include "support/test_files.h"
#include "support/tray_recorder.h"
#include "support/wait.h"
#include "support/window_state.h"

// Shared by the tests of the whole program. Identifiers, texts and file contents are repeated here
// and not taken from the program, as users and other programs rely on them.
namespace morvane::test {

inline constexpr WORD ApplyNowCommand = 1001;
inline constexpr WORD AlwaysOnTopCommand = 1002;
inline constexpr WORD OpenSettingsCommand = 1003;
inline constexpr WORD ExitCommand = 1004;
inline constexpr WORD MinSizeActiveCommand = 1006;
inline constexpr WORD StartWithWindowsCommand = 1010;
inline constexpr WORD TogglePinCommand = 2500;  // + row
inline constexpr WORD MinSizeCommand = 3000;    // + row
inline constexpr UINT TrayMessage = WM_APP + 1;

inline constexpr wchar_t MutexName[] = L"Local\\Morvane_SingleInstance";

// A settings file as the program writes it, one line per entry.
[[nodiscard]] std::string SettingsText(bool pinning, std::initializer_list<std::string_view> lines);

// Replaces the settings file in one step, like editors that save by renaming: a pass would take a
// half-written file for a list without the other entries.
[[nodiscard]] bool EditSettings(std::string_view bytes);

// Resets the profile before every test; skips the test if the profile is not disposable.
class ProgramTest : public ::testing::Test {
protected:
    void SetUp() override;
};

// Waits for its control window; fails the test if it does not come.
[[nodiscard]] Program StartedProgram(const Environment& changes = {});

[[nodiscard]] bool BecomesTopmost(HWND window);
[[nodiscard]] bool BecomesOrdinary(HWND window);

// The answer to a message sent to a window; empty if none comes.
[[nodiscard]] std::optional<LRESULT> Answer(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam);

// How often the window has been asked to the top of the topmost windows.
[[nodiscard]] std::size_t TopmostRequests(Actor& actor, HWND window);

// A pinned window that shows when passes have run, so that a test can check that nothing happens
// without a delay. Its pattern, SentinelLine, must be in the settings file.
class Sentinel {
public:
    explicit Sentinel(Actor& actor);

    // Waits until it is pinned for the first time.
    [[nodiscard]] bool WaitForPin() const;

    // Triggers passes by command and returns when one that began after this call is over.
    [[nodiscard]] bool WaitForPass(const Program& program) const;

    // The same, waiting for the program's own timer.
    [[nodiscard]] bool WaitForTimedPass() const;

    // When each pass so far reached it, oldest first, in GetTickCount64's milliseconds. If it is
    // the list's first entry, it is the last window of a pass.
    [[nodiscard]] std::vector<ULONGLONG> PassTicks() const;

    // Waits for this many intervals between passes since its records were cleared. Returns them in
    // milliseconds, shortest first; fails the test if they do not come.
    [[nodiscard]] std::vector<ULONGLONG> PassGaps(std::size_t count) const;

    [[nodiscard]] HWND Window() const { return window_; }

private:
    [[nodiscard]] bool WaitForRequests(std::size_t before) const;

    Actor* actor_;
    HWND window_;
};

inline constexpr std::string_view SentinelLine = "Sentinel";

// The titles in the program's window list, in row order.
[[nodiscard]] std::vector<std::wstring> RowTitles();

// The title's row; -1 if it has none.
[[nodiscard]] int RowOfTitle(std::wstring_view title);

// Sends the command of the title's row, counted from firstCommand; false if there is no such row or
// the command fails.
[[nodiscard]] bool SendRowCommand(const Program& program, WORD firstCommand,
                                  std::wstring_view title);

// What the taskbar receives for the system's program icon, sent by the test itself. The recorder
// forgets it again.
[[nodiscard]] TrayCall SystemIconCall(TrayRecorder& recorder);

// The balloons among the calls, oldest first.
[[nodiscard]] std::vector<TrayCall> Balloons(const TrayRecorder& recorder);

// The next balloon after those already seen; an empty call if none comes.
[[nodiscard]] TrayCall WaitForBalloon(const TrayRecorder& recorder, std::size_t seen = 0);

}  // namespace morvane::test
