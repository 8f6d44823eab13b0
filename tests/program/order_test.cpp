// What happens before the icon appears and before it goes.

#include <utility>

#include "program/scene.h"

namespace morvane::test {
namespace {

using OrderTest = ProgramTest;

// The program waits for the answer to its call, so nothing changes while the recorder looks.
TEST_F(OrderTest, IconComesBetweenTheFileAndTheFirstPass) {
    TrayRecorder recorder;
    ASSERT_FALSE(PathExists(SettingsPath()));
    recorder.Watch(nullptr, SettingsPath());
    {
        const Program program = StartedProgram();
        ASSERT_EQ(recorder.Calls().size(), 1U);
        EXPECT_EQ(recorder.Calls()[0].message, static_cast<DWORD>(NIM_ADD));
        EXPECT_TRUE(recorder.Calls()[0].watchedPathExists);
        ASSERT_EQ(program.ExitByCommand(), 0U);
    }
    ASSERT_TRUE(EditSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    recorder.Forget();
    recorder.Watch(target, SettingsPath());
    const Program program = StartedProgram();
    EXPECT_TRUE(IsTopmost(target)) << "by the first pass";
    ASSERT_EQ(recorder.Calls().size(), 1U);
    EXPECT_FALSE(recorder.Calls()[0].watchedWindowTopmost);
}

TEST_F(OrderTest, IconGoesAfterTheWindowsHaveBeenReleased) {
    using End = std::optional<DWORD> (Program::*)() const;
    const std::pair<const char*, End> ends[] = {{"command", &Program::ExitByCommand},
                                                {"close message", &Program::ExitByClose}};
    for (const auto& [name, end] : ends) {
        SCOPED_TRACE(name);
        TrayRecorder recorder;
        ASSERT_TRUE(EditSettings("Target\n"));
        Actor actor;
        const HWND target = actor.Create({.title = L"Target"});
        recorder.Watch(target, SettingsPath());
        const Program program = StartedProgram();
        ASSERT_TRUE(BecomesTopmost(target));
        // A call made while the window is pinned shows that the recorder notices that.
        ASSERT_TRUE(program.SendCommand(MinSizeActiveCommand));
        ASSERT_EQ((program.*end)(), 0U);
        const std::vector<TrayCall> calls = recorder.Calls();
        ASSERT_EQ(calls.size(), 3U);
        EXPECT_TRUE(calls[1].watchedWindowTopmost);
        EXPECT_EQ(calls[2].message, static_cast<DWORD>(NIM_DELETE));
        EXPECT_FALSE(calls[2].watchedWindowTopmost);
    }
}

}  // namespace
}  // namespace morvane::test
