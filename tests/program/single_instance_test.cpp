// One instance per sign-in session, and what further starts do.

#include <algorithm>

#include "program/scene.h"

namespace morvane::test {
namespace {

using SingleInstanceTest = ProgramTest;

bool MutexExists() {
    const KernelHandle mutex(OpenMutexW(SYNCHRONIZE, FALSE, MutexName));
    return static_cast<bool>(mutex);
}

TEST_F(SingleInstanceTest, FurtherStartsAndSwitchesLeaveTheInstanceUndisturbed) {
    const TrayRecorder recorder;
    const Sentinel sentinel(Other());
    const Program first = StartedProgram("Sentinel\n", {sentinel.Window()});
    const HWND control = first.ControlWindow();
    EXPECT_EQ(RunProgram(L""), 0U);
    EXPECT_EQ(RunProgram(L"--install-startup"), 0U);
    EXPECT_TRUE(PathExists(StartupShortcut()));
    EXPECT_EQ(RunProgram(L"--remove-startup"), 0U);
    EXPECT_FALSE(PathExists(StartupShortcut()));
    EXPECT_TRUE(sentinel.WaitForTimedPass());
    EXPECT_TRUE(first.IsRunning());
    EXPECT_EQ(first.ControlWindow(), control);
    EXPECT_TRUE(IsTopmost(sentinel.Window()));
    EXPECT_EQ(recorder.Calls().size(), 1U) << "only the first start's icon";
    EXPECT_EQ(ReadSettings(), "Sentinel\n");
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

TEST_F(SingleInstanceTest, MutexIsHeldAndLivesAsLongAsTheInstance) {
    EXPECT_FALSE(MutexExists());
    for (int start = 0; start < 2; ++start) {
        const Program program = StartedProgram();
        {
            const KernelHandle mutex(OpenMutexW(SYNCHRONIZE, FALSE, MutexName));
            ASSERT_TRUE(mutex) << start;
            EXPECT_EQ(WaitForSingleObject(mutex.get(), 0), DWORD{WAIT_TIMEOUT}) << start;
        }
        EXPECT_EQ(program.ExitByCommand(), 0U) << start;
        EXPECT_FALSE(MutexExists()) << start;
    }
}

TEST_F(SingleInstanceTest, StartEndsSilentlyIfTheNameIsTaken) {
    using Take = KernelHandle (*)();
    constexpr Take Takes[] = {
        [] { return KernelHandle(CreateMutexW(nullptr, TRUE, MutexName)); },
        // Another kind of object has the name, so the mutex cannot be created.
        [] { return KernelHandle(CreateEventW(nullptr, TRUE, FALSE, MutexName)); },
    };
    for (const Take take : Takes) {
        const KernelHandle taken = take();
        ASSERT_TRUE(taken);
        EXPECT_EQ(RunProgram(L""), 0U);
        EXPECT_FALSE(PathExists(DataFolder()));
    }
}

}  // namespace
}  // namespace morvane::test
