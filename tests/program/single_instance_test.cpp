// One instance per sign-in session, and what further starts do.

#include <algorithm>

#include "program/scene.h"
#include "support/tray.h"

namespace morvane::test {
namespace {

using SingleInstanceTest = ProgramTest;

bool MutexExists() {
    const KernelHandle mutex(OpenMutexW(SYNCHRONIZE, FALSE, MutexName));
    return static_cast<bool>(mutex);
}

TEST_F(SingleInstanceTest, SecondStartEndsAndLeavesTheFirstUndisturbed) {
    ASSERT_TRUE(EditSettings("Sentinel\nTarget\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Sentinel sentinel(actor);
    const Program first = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(target));
    const HWND control = first.ControlWindow();
    ASSERT_TRUE(TrayIconPresent(control));

    EXPECT_EQ(RunProgram(L""), 0U);

    EXPECT_TRUE(sentinel.WaitForTimedPass());
    EXPECT_TRUE(first.IsRunning());
    EXPECT_EQ(first.ControlWindow(), control);
    EXPECT_TRUE(IsTopmost(target));
    EXPECT_TRUE(TrayIconPresent(control));
    EXPECT_EQ(ReadSettings(), "Sentinel\nTarget\n");
}

TEST_F(SingleInstanceTest, SecondStartDoesNotContactTheTaskbar) {
    const TrayRecorder recorder;
    const Program first = StartedProgram();
    ASSERT_TRUE(WaitUntil([&] { return !recorder.Calls().empty(); }));
    const std::size_t before = recorder.Calls().size();
    EXPECT_EQ(RunProgram(L""), 0U);
    EXPECT_EQ(recorder.Calls().size(), before);
}

TEST_F(SingleInstanceTest, SwitchesActBesideARunningInstance) {
    ASSERT_TRUE(EditSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program first = StartedProgram();
    ASSERT_TRUE(sentinel.WaitForPin());
    EXPECT_EQ(RunProgram(L"--install-startup"), 0U);
    EXPECT_TRUE(PathExists(StartupShortcut()));
    EXPECT_EQ(RunProgram(L"--remove-startup"), 0U);
    EXPECT_FALSE(PathExists(StartupShortcut()));
    EXPECT_TRUE(sentinel.WaitForTimedPass());
    EXPECT_TRUE(first.IsRunning());
    EXPECT_TRUE(IsTopmost(sentinel.Window()));
}

TEST_F(SingleInstanceTest, FiveStartsAtOnceLeaveExactlyOne) {
    const std::vector<Program> programs = Program::SeveralAtOnce(5);
    const auto running = [&programs] {
        return std::count_if(programs.begin(), programs.end(),
                             [](const Program& program) { return program.IsRunning(); });
    };
    EXPECT_TRUE(WaitUntil([&] { return running() <= 1; }));
    EXPECT_EQ(running(), 1);
    for (const Program& program : programs) {
        if (program.IsRunning()) {
            EXPECT_NE(program.WaitForControlWindow(), nullptr);
            EXPECT_EQ(program.ExitByCommand(), 0U);
        } else {
            EXPECT_EQ(program.WaitForExit(), 0U);
        }
    }
}

TEST_F(SingleInstanceTest, MutexLivesAsLongAsTheInstance) {
    EXPECT_FALSE(MutexExists());
    const Program first = StartedProgram();
    EXPECT_TRUE(MutexExists());
    EXPECT_EQ(first.ExitByCommand(), 0U);
    EXPECT_FALSE(MutexExists());
    const Program second = StartedProgram();
    EXPECT_TRUE(second.IsRunning());
    EXPECT_TRUE(MutexExists());
}

TEST_F(SingleInstanceTest, MutexIsHeldByTheInstance) {
    const Program program = StartedProgram();
    const KernelHandle mutex(OpenMutexW(SYNCHRONIZE, FALSE, MutexName));
    ASSERT_TRUE(mutex);
    EXPECT_EQ(WaitForSingleObject(mutex.get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_NE(WaitForSingleObject(mutex.get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
}

TEST_F(SingleInstanceTest, InstanceThatCrashedDoesNotBlockTheNext) {
    const Program first = StartedProgram();
    first.Kill();
    const Program second = StartedProgram();
    EXPECT_TRUE(second.IsRunning());
}

TEST_F(SingleInstanceTest, MutexOfAnotherProcessEndsTheStartSilently) {
    const KernelHandle mutex(CreateMutexW(nullptr, TRUE, MutexName));
    ASSERT_TRUE(mutex);
    EXPECT_EQ(RunProgram(L""), 0U);
    EXPECT_FALSE(PathExists(DataFolder()));
}

// Another kind of object has the name, so the mutex cannot be created.
TEST_F(SingleInstanceTest, ProgramDoesNotRunWithoutItsMutex) {
    const KernelHandle event(CreateEventW(nullptr, TRUE, FALSE, MutexName));
    ASSERT_TRUE(event);
    EXPECT_EQ(RunProgram(L""), 0U);
    EXPECT_FALSE(PathExists(DataFolder()));
}

TEST_F(SingleInstanceTest, SwitchesActEvenIfTheMutexIsTaken) {
    const KernelHandle mutex(CreateMutexW(nullptr, TRUE, MutexName));
    EXPECT_EQ(RunProgram(L"--install-startup"), 0U);
    EXPECT_TRUE(PathExists(StartupShortcut()));
}

}  // namespace
}  // namespace morvane::test
