// The program's exit leaves nothing behind but its file.

#include "program/scene.h"
#include "support/tray.h"

namespace morvane::test {
namespace {

using ExitTest = ProgramTest;

struct Ending {
    const char* name;
    std::optional<DWORD> (*end)(const Program& program);
};

constexpr Ending Endings[] = {
    {"command", [](const Program& program) { return program.ExitByCommand(); }},
    {"close message", [](const Program& program) { return program.ExitByClose(); }},
};

constexpr std::string_view Untidy = "# mine\r\n Target \r\nOther 10 10\r\n@pinning=yes";

// Only the program unpins these windows, so if they are ordinary after its exit, it did that
// before.
TEST_F(ExitTest, PinnedWindowsAreOrdinaryAgainWhenTheProcessEnds) {
    for (const Ending& ending : Endings) {
        ASSERT_TRUE(EditSettings(Untidy)) << ending.name;
        Actor actor;
        const HWND target = actor.Create({.title = L"Target"});
        const HWND iconic = actor.Create({.title = L"Other"});
        const HWND hidden = actor.Create({.title = L"Target in hiding", .visible = false});
        actor.SetTopmost(hidden, true);
        actor.Minimise(iconic);
        const Program program = StartedProgram();
        ASSERT_TRUE(BecomesTopmost(target)) << ending.name;
        ASSERT_TRUE(BecomesTopmost(iconic)) << ending.name;
        EXPECT_EQ(ending.end(program), 0U) << ending.name;
        EXPECT_FALSE(IsTopmost(target)) << ending.name;
        EXPECT_FALSE(IsTopmost(iconic)) << ending.name;
        EXPECT_NE(IsIconic(iconic), FALSE) << ending.name;
        EXPECT_TRUE(IsTopmost(hidden)) << ending.name << ": never pinned by the program";
        EXPECT_EQ(ReadSettings(), Untidy) << ending.name;
    }
}

TEST_F(ExitTest, IconIsGoneWhenTheProcessEnds) {
    for (const Ending& ending : Endings) {
        const Program program = StartedProgram();
        const HWND control = program.ControlWindow();
        ASSERT_TRUE(TrayIconPresent(control)) << ending.name;
        EXPECT_EQ(ending.end(program), 0U) << ending.name;
        EXPECT_FALSE(TrayIconPresent(control)) << ending.name;
    }
}

TEST_F(ExitTest, IconIsRemovedByTheProgramItself) {
    const TrayRecorder recorder;
    const Program program = StartedProgram();
    EXPECT_EQ(program.ExitByCommand(), 0U);
    const std::vector<TrayCall> calls = recorder.Calls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls.front().message, static_cast<DWORD>(NIM_ADD));
    EXPECT_EQ(calls.back().message, static_cast<DWORD>(NIM_DELETE));
    EXPECT_EQ(calls.back().window, calls.front().window);
    EXPECT_EQ(calls.back().id, calls.front().id);
}

TEST_F(ExitTest, NewStartWorksAtOnce) {
    for (const Ending& ending : Endings) {
        const Program program = StartedProgram();
        EXPECT_EQ(ending.end(program), 0U) << ending.name;
        const Program next;
        EXPECT_NE(next.WaitForControlWindow(), nullptr) << ending.name;
        EXPECT_EQ(next.ExitByCommand(), 0U) << ending.name;
    }
}

TEST_F(ExitTest, DeletedFileIsNotWrittenAtTheEnd) {
    const Program program = StartedProgram();
    ASSERT_NE(DeleteFileW(SettingsPath().c_str()), FALSE);
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_FALSE(PathExists(SettingsPath()));
}

TEST_F(ExitTest, WindowsThatAreGoneDoNotDisturbTheEnd) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND dying = actor.Create({.title = L"Target 1"});
    const HWND target = actor.Create({.title = L"Target 2"});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(dying));
    ASSERT_TRUE(BecomesTopmost(target));
    actor.Destroy(dying);
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_FALSE(IsTopmost(target));
}

TEST_F(ExitTest, SwitchedOffProgramEndsTheSameWay) {
    ASSERT_TRUE(WriteSettings("@pinning=0\nTarget\n"));
    const Program program = StartedProgram();
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(ReadSettings(), "@pinning=0\nTarget\n");
}

// A crash leaves windows topmost; the next instance takes them over.
TEST_F(ExitTest, NextInstanceReleasesWhatACrashedOneLeft) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    {
        const Program crashing = StartedProgram();
        ASSERT_TRUE(BecomesTopmost(target));
        crashing.Kill();
        EXPECT_TRUE(IsTopmost(target));
    }
    const std::size_t before = TopmostRequests(actor, target);
    const Program next = StartedProgram();
    ASSERT_TRUE(WaitUntil([&] { return TopmostRequests(actor, target) > before; }));
    EXPECT_EQ(next.ExitByCommand(), 0U);
    EXPECT_FALSE(IsTopmost(target));
}

}  // namespace
}  // namespace morvane::test
