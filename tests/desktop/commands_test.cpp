// The menu's commands, each run while the engine is bound to an outdated file path.

#include "app/commands.h"

#include <gtest/gtest.h>
#include <string>

#include "base/process.h"
#include "desktop/engine_fixture.h"
#include "pin/candidates.h"
#include "pin/engine.h"
#include "support/test_environment.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

using CommandBindingTest = EngineTest;

TEST_F(CommandBindingTest, EngineIsBoundBeforeTheCommandDoesItsWork) {
    const struct {
        const char* name;
        UINT command;
        std::string saved;
        bool pinned;
    } cases[] = {
        {"Apply now", 1001, "alpha\n", true},
        {"Always on top", 1002, std::string(SettingsHeader) + "@pinning=0\n", false},
        {"Add / Remove", 2500, WrittenSettings("Alpha\n"), true},
        {"Add / Remove (min size)", 3000, WrittenSettings("Alpha\t400\t300\n"), true},
    };
    const HWND control = Other().Create({.visible = false});
    Process().controlWindow = control;
    for (const auto& item : cases) {
        const HWND window = Window(L"Alpha");
        RebuildCandidates();
        ASSERT_EQ(CandidateList().size(), 1U) << "its row is the first";
        WriteSettings("alpha\n");
        Engine().ownWindow = nullptr;
        Engine().settingsPath = L"C:\\elsewhere\\config.txt";
        Engine().pinList = PinList{};
        RunCommand(control, item.command);
        EXPECT_EQ(Engine().settingsPath, SettingsPath()) << item.name;
        EXPECT_EQ(Engine().ownWindow, control) << item.name;
        EXPECT_EQ(ReadSettings(), item.saved) << item.name;
        EXPECT_EQ(IsTopmost(window), item.pinned) << item.name;
        Other().Destroy(window);
    }
}

}  // namespace
}  // namespace morvane::test
