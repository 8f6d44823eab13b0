// The program's exit leaves nothing behind but its file.

#include "program/scene.h"
#include "support/tray.h"

namespace morvane::test {
namespace {

using ExitTest = ProgramTest;

struct Ending {
    const char* name;
    std::optional<DWORD> (Program::*end)() const;
};

constexpr Ending Endings[] = {
    {"command", &Program::ExitByCommand},
    {"close message", &Program::ExitByClose},
};

constexpr std::string_view Untidy = "# mine\r\n Target \r\nOther 10 10\r\n@pinning=yes";

// Only the program unpins these windows, so if they are ordinary after its exit, it did that
// before.
TEST_F(ExitTest, WindowsAreOrdinaryAndTheIconIsGoneWhenTheProcessEnds) {
    const HWND target = Window(L"Target");
    const HWND iconic = Window(L"Other");
    const HWND hidden = Other().Create({.title = L"Target in hiding", .visible = false});
    Other().SetTopmost(hidden, true);
    Other().Minimise(iconic);
    for (const Ending& ending : Endings) {
        SCOPED_TRACE(ending.name);
        // The second start shows that the first left nothing in its way.
        const Program program = StartedProgram(Untidy, {target, iconic});
        const HWND control = program.ControlWindow();
        EXPECT_TRUE(TrayIconPresent(control));
        EXPECT_EQ((program.*ending.end)(), 0U);
        EXPECT_FALSE(IsTopmost(target));
        EXPECT_FALSE(IsTopmost(iconic));
        EXPECT_NE(IsIconic(iconic), FALSE);
        EXPECT_TRUE(IsTopmost(hidden)) << "never pinned by the program";
        EXPECT_FALSE(TrayIconPresent(control));
        EXPECT_EQ(ReadSettings(), Untidy);
    }
}

// What another program may post. Its parameter is not the exit code.
TEST_F(ExitTest, QuitMessageReleasesTheWindowsAndEndsTheProcess) {
    const HWND target = Window(L"Target");
    const Program program = StartedProgram("Target\n", {target});
    const HWND control = program.ControlWindow();
    PostThreadMessageW(GetWindowThreadProcessId(control, nullptr), WM_QUIT, 7, 0);
    EXPECT_EQ(program.WaitForExit(), 0U);
    EXPECT_FALSE(IsTopmost(target));
    RemoveTrayIconOf(control);
}

TEST_F(ExitTest, DeletedFileIsNotWrittenAtTheEnd) {
    const Program program = StartedProgram();
    ASSERT_NE(DeleteFileW(SettingsPath().c_str()), FALSE);
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_FALSE(PathExists(SettingsPath()));
}

// A crash leaves windows topmost and its mutex to nobody; the next instance takes them over.
TEST_F(ExitTest, NextInstanceReleasesWhatACrashedOneLeft) {
    const HWND target = Window(L"Target");
    {
        const Program crashing = StartedProgram("Target\n", {target});
        crashing.Kill();
        EXPECT_TRUE(IsTopmost(target));
    }
    const std::size_t before = TopmostRequests(Other(), target);
    const Program next = StartedProgram();
    EXPECT_GT(TopmostRequests(Other(), target), before) << "by the first pass";
    EXPECT_EQ(next.ExitByCommand(), 0U);
    EXPECT_FALSE(IsTopmost(target));
}

}  // namespace
}  // namespace morvane::test
