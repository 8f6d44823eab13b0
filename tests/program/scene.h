#pragma once

#include <gtest/gtest.h>
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

// Settings. A test gives their lines as a user would type them, to StartedProgram or, at any other
// time, to WriteSettings. What the program itself writes is compared with SettingsText.
[[nodiscard]] std::string SettingsText(bool pinning, std::string_view lines);

// Resets the profile before every test; skips the test if the profile is not disposable.
class ProgramTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;  // ends the editors that the program started

    // The process that owns the test's windows, and one of them.
    [[nodiscard]] Actor& Other();
    [[nodiscard]] HWND Window(std::wstring_view title);
    [[nodiscard]] HWND Window(std::wstring_view title, int width, int height);

private:
    std::optional<Actor> other_;
};

// Waits for the program's control window, and until its first pass has pinned these windows; fails
// the test otherwise. Without settings the file is left as it is.
[[nodiscard]] Program StartedProgram(std::string_view settings = {},
                                     const std::vector<HWND>& pinned = {});

[[nodiscard]] bool BecomesTopmost(HWND window);
[[nodiscard]] bool BecomesOrdinary(HWND window);

// The answer to a message sent to a window; empty if none comes.
[[nodiscard]] std::optional<LRESULT> Answer(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam);

// How often the window has been asked to the top of the topmost windows.
[[nodiscard]] std::size_t TopmostRequests(Actor& actor, HWND window);

// A pinned window that shows when passes have run, so that a test can check that nothing happens
// without a delay. Its pattern, "Sentinel", must be in the settings file.
class Sentinel {
public:
    explicit Sentinel(Actor& actor);

    // Triggers passes by command and returns when one that began after this call is over.
    [[nodiscard]] bool WaitForPass(const Program& program) const;

    // The same, waiting for the program's own timer.
    [[nodiscard]] bool WaitForTimedPass() const;

    // When each pass so far reached it, oldest first, in GetTickCount64's milliseconds. If it is
    // the list's first entry, it is the last window of a pass.
    [[nodiscard]] std::vector<ULONGLONG> PassTicks() const;

    // The passes that have reached it between two readings of the performance counter.
    [[nodiscard]] std::size_t PassesBetween(LONGLONG after, LONGLONG before) const;

    // Waits for the first pass that surely begins after this call, and returns the windows in the
    // order that it asked for, topmost first. The sentinel must be the list's first entry.
    [[nodiscard]] std::vector<HWND> OrderOfNextPass(const std::vector<HWND>& windows) const;

    // After a pass, which may be repeated by the program's own timer.
    [[nodiscard]] bool DesktopShows(const std::vector<HWND>& windows) const;

    // Forgets the passes so far, and judges the intervals between those that follow.
    void ExpectPassesTwiceASecond(const char* when) const;

    [[nodiscard]] HWND Window() const { return window_; }

private:
    [[nodiscard]] bool WaitForRequests(std::size_t before) const;
    [[nodiscard]] std::vector<PositionRequest> Raises() const;  // one per pass

    Actor* actor_;
    HWND window_;
};

// The title's row; -1 if it has none.
[[nodiscard]] int RowOfTitle(std::wstring_view title);

// Sends the command of the title's row, counted from firstCommand; false if there is no such row or
// the command fails.
[[nodiscard]] bool SendRowCommand(const Program& program, WORD firstCommand,
                                  std::wstring_view title);

// The balloons among the calls, oldest first.
[[nodiscard]] std::vector<TrayCall> Balloons(const TrayRecorder& recorder);

// Waits for the next balloon after those already seen and compares its title, text and kind.
void ExpectBalloon(const TrayRecorder& recorder, const wchar_t* text, DWORD kind = NIIF_INFO,
                   std::size_t seen = 0);

}  // namespace morvane::test
