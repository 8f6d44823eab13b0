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

// What the tests of the whole program share. Identifiers, texts and file contents are written down
// here a second time instead of being taken from the program: they are what users and other
// programs rely on.
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

// A file as the program writes it, with one line per entry.
[[nodiscard]] std::string SettingsText(bool pinning, std::initializer_list<std::string_view> lines);

// Puts the content in place of the settings file in one step, as editors do that save by renaming:
// no pass ever meets a half-written file, which it would take for a list without these entries.
[[nodiscard]] bool EditSettings(std::string_view bytes);

// Starts every test as if the program had never run; skips it where the profile is somebody's.
class ProgramTest : public ::testing::Test {
protected:
    void SetUp() override;
};

// Started, and its control window is there; a failure of the running test otherwise.
[[nodiscard]] Program StartedProgram(const Environment& changes = {});

[[nodiscard]] bool BecomesTopmost(HWND window);
[[nodiscard]] bool BecomesOrdinary(HWND window);

// The answer to a message sent to a window, or nothing when none comes.
[[nodiscard]] std::optional<LRESULT> Answer(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam);

// How often the window has been asked to the top of the topmost band.
[[nodiscard]] std::size_t TopmostRequests(Actor& actor, HWND window);

// A pinned window that tells when passes have gone by: for "nothing happens" without a delay. Its
// pattern, SentinelLine, has to be in the settings file.
class Sentinel {
public:
    explicit Sentinel(Actor& actor);

    // It is pinned, for the first time.
    [[nodiscard]] bool WaitForPin() const;

    // Orders passes by command and returns when one that began after this call is over.
    [[nodiscard]] bool WaitForPass(const Program& program) const;

    // The same without a command: the program's own timer has to do it.
    [[nodiscard]] bool WaitForTimedPass() const;

    // When each pass so far reached it, oldest first: GetTickCount64, milliseconds. As the first
    // entry of the list it is the last window of a pass.
    [[nodiscard]] std::vector<ULONGLONG> PassTicks() const;

    // The times between the passes that reached it since its records were forgotten, shortest
    // first, once there are so many; milliseconds. A failure of the running test when they do not
    // come.
    [[nodiscard]] std::vector<ULONGLONG> PassGaps(std::size_t count) const;

    [[nodiscard]] HWND Window() const { return window_; }

private:
    [[nodiscard]] bool WaitForRequests(std::size_t before) const;

    Actor* actor_;
    HWND window_;
};

inline constexpr std::string_view SentinelLine = "Sentinel";

// The titles of the program's list of windows, in the order of its rows.
[[nodiscard]] std::vector<std::wstring> RowTitles();

// The row that the title has among them; -1 when it has none.
[[nodiscard]] int RowOfTitle(std::wstring_view title);

// Sends the row's command of a family that begins with firstCommand; false without such a row too.
[[nodiscard]] bool SendRowCommand(const Program& program, WORD firstCommand,
                                  std::wstring_view title);

// What the taskbar gets of the system's icon for programs, asked for by this very process. The
// recorder forgets it again.
[[nodiscard]] TrayCall SystemIconCall(TrayRecorder& recorder);

// The balloons among the calls, oldest first.
[[nodiscard]] std::vector<TrayCall> Balloons(const TrayRecorder& recorder);

// The next balloon after those already seen, or an empty call when none comes.
[[nodiscard]] TrayCall WaitForBalloon(const TrayRecorder& recorder, std::size_t seen = 0);

}  // namespace morvane::test
