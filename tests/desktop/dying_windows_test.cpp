// A window that dies at any point while the program works with it.

#include <algorithm>
#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <string>

#include "app/reported_commands.h"
#include "base/gui_owners.h"
#include "base/win_shell.h"
#include "desktop/engine_fixture.h"
#include "desktop/menu_reader.h"
#include "pin/candidates.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "pin/pin_operations.h"
#include "support/import_watch.h"
#include "support/test_environment.h"
#include "support/tray_recorder.h"
#include "support/window_owner.h"
#include "support/window_state.h"
#include "ui/active_window.h"
#include "ui/menu_build.h"
#include "ui/menu_rows.h"
#include "ui/tray_icon.h"

namespace morvane::test {
namespace {

// The window that dies, and before which of the program's calls.
struct Fate {
    Actor* actor = nullptr;
    HWND victim = nullptr;
    std::size_t deadlyCall = 0;  // counted from 1
    std::size_t calls = 0;
};

Fate fate;

void Meet(HWND window) {
    if (window == fate.victim && ++fate.calls == fate.deadlyCall) {
        fate.actor->Destroy(window);
    }
}

template <typename Function, int Number>
ImportWatch<Function, Number> Gate(const char* name) {
    return ImportWatch<Function, Number>(name, [](HWND window, auto... /*rest*/) { Meet(window); });
}

// Watches every call the program makes about another program's window.
void RunThroughGates(const std::function<void()>& step) {
    [[maybe_unused]] const auto isWindow = Gate<decltype(&IsWindow), 0>("IsWindow");
    [[maybe_unused]] const auto isVisible = Gate<decltype(&IsWindowVisible), 1>("IsWindowVisible");
    [[maybe_unused]] const auto isIconic = Gate<decltype(&IsIconic), 2>("IsIconic");
    [[maybe_unused]] const auto getWindow = Gate<decltype(&GetWindow), 3>("GetWindow");
    [[maybe_unused]] const auto getClass = Gate<decltype(&GetClassNameW), 4>("GetClassNameW");
    [[maybe_unused]] const auto getText = Gate<decltype(&GetWindowTextW), 5>("GetWindowTextW");
    [[maybe_unused]] const auto getRect = Gate<decltype(&GetWindowRect), 6>("GetWindowRect");
    [[maybe_unused]] const auto getLong = Gate<decltype(&GetWindowLongW), 7>("GetWindowLongW");
    [[maybe_unused]] const auto setPosition = Gate<decltype(&SetWindowPos), 8>("SetWindowPos");
    step();
}

class DyingWindowsTest : public EngineTest {
protected:
    void TearDown() override {
        fate = Fate{};
        EngineTest::TearDown();
    }

    // Runs the step again and again; each time a new window dies before a later one of the step's
    // calls about it. Each time the step must still have handled the other window.
    void LetDieEverywhere(const std::function<void()>& prepare, const std::function<void()>& step,
                          const std::function<void(HWND)>& check, std::size_t fewestCalls) {
        std::size_t deadly = 1;
        for (bool died = true; died; ++deadly) {
            SCOPED_TRACE(deadly);
            Engine().pinnedWindows.clear();
            const HWND healthy = Window(L"Alpha healthy", 500);
            const HWND victim = Window(L"Alpha dying");
            fate = {.actor = &Other(), .victim = victim, .deadlyCall = deadly, .calls = 0};
            prepare();
            RunThroughGates(step);
            died = fate.calls >= deadly;
            EXPECT_EQ(IsWindow(victim) == FALSE, died);
            check(healthy);
            if (!died) {
                Other().Destroy(victim);
            }
            fate = Fate{};
            Other().Destroy(healthy);
        }
        EXPECT_GE(deadly, fewestCalls) << "not every call was intercepted";
    }
};

TEST_F(DyingWindowsTest, PassPinsTheOthers) {
    // The dying window's turn comes first, then last.
    for (const char* const lines :
         {"healthy 450 350\nalpha 450 350\n", "dying 450 350\nalpha 450 350\n"}) {
        SCOPED_TRACE(lines);
        LoadSettings(lines);
        LetDieEverywhere([] {}, [] { EXPECT_TRUE(ApplyAll()) << "asks the other one"; },
                         [](HWND healthy) { EXPECT_TRUE(IsTopmost(healthy)); }, 14);
    }
}

TEST_F(DyingWindowsTest, NextPassKeepsTheOthersAndForgetsTheDead) {
    LoadSettings("alpha\n");
    LetDieEverywhere(
        ApplyAll, ApplyAll,
        [](HWND healthy) {
            EXPECT_TRUE(IsTopmost(healthy));
            ApplyAll();
            for (const HWND remembered : Engine().pinnedWindows) {
                EXPECT_NE(IsWindow(remembered), FALSE);
            }
        },
        18);
}

TEST_F(DyingWindowsTest, ReleaseReachesTheOthers) {
    LoadSettings("alpha\n");
    LetDieEverywhere(
        ApplyAll, ReleaseAll,
        [](HWND healthy) {
            EXPECT_FALSE(IsTopmost(healthy));
            EXPECT_TRUE(Engine().pinnedWindows.empty());
        },
        3);
}

TEST_F(DyingWindowsTest, MenuOffersTheOthers) {
    LetDieEverywhere([] {}, RebuildCandidates,
                     [](HWND healthy) {
                         const auto& all = CandidateList();
                         EXPECT_TRUE(std::any_of(all.begin(), all.end(), [healthy](const auto& c) {
                             return c.window == healthy;
                         }));
                     },
                     5);
}

TEST_F(DyingWindowsTest, BothListsOfTheMenuHoldTheOthers) {
    Menu toPin;
    Menu toMeasure;
    const auto prepare = [this] {
        ClearMenuRows();
        EXPECT_TRUE(Other().BringToForeground(fate.victim));
        PrepareMenuState();
        EXPECT_EQ(ActiveWindow(), fate.victim);
    };
    const auto build = [&] {
        toPin = BuildAddRemoveMenu();
        toMeasure = BuildMinSizeMenu();
    };
    const auto check = [&](HWND healthy) {
        const auto& all = CandidateList();
        const auto isHealthy = [healthy](const auto& c) { return c.window == healthy; };
        const auto place = std::find_if(all.begin(), all.end(), isHealthy);
        ASSERT_NE(place, all.end());
        const auto row = static_cast<UINT>(place - all.begin());
        ASSERT_GT(row, 0U) << "below the dying window";
        EXPECT_EQ(GetMenuItemCount(toPin.get()), static_cast<int>(all.size()));
        EXPECT_EQ(ItemText(toPin.get(), 2500 + row, MF_BYCOMMAND), L"Alpha healthy");
        EXPECT_EQ(ItemText(toMeasure.get(), 3000 + row, MF_BYCOMMAND),
                  L"Alpha healthy (400 x 300)");
        const bool measured = GetMenuItemID(toMeasure.get(), 0) == 1006;
        EXPECT_EQ(ItemText(toMeasure.get(), 0, MF_BYPOSITION).ends_with(L" (400 x 300)"), measured);
        EXPECT_NE(GetMenuState(toMeasure.get(), 1, MF_BYPOSITION) & MF_SEPARATOR, 0U)
            << "one row for the active window, whatever its text";
    };
    LetDieEverywhere(prepare, build, check, 13);
    ClearMenuRows();
}

TEST_F(DyingWindowsTest, MeasuringReportsOnceAndRecordsAllOrNothing) {
    TrayRecorder recorder;
    const WindowOwner owner = MessageOnlyWindow();
    AddTrayIcon(owner.get(), GetModuleHandleW(nullptr));
    int warnings = 0;
    int successes = 0;
    const auto prepare = [&] {
        LoadSettings("healthy\n");
        recorder.Forget();
    };
    const auto check = [&](HWND healthy) {
        ASSERT_EQ(recorder.Calls().size(), 1U);
        const TrayCall balloon = recorder.Calls()[0];
        const bool warned = balloon.infoFlags == NIIF_WARNING;
        ++(warned ? warnings : successes);
        if (warned) {
            EXPECT_EQ(Engine().pinList.entries.size(), 1U);
            EXPECT_EQ(ReadSettings(), "healthy\n");
        } else {
            EXPECT_EQ(balloon.info, L"Minimum size set to 400 x 300.");
            EXPECT_EQ(ReadSettings(), WrittenSettings("healthy\nAlpha dying\t400\t300\n"));
        }
        EXPECT_EQ(IsTopmost(healthy), !warned) << "a recorded size is followed by a pass";
    };
    LetDieEverywhere(prepare, [] { PinWindowAtCurrentSize(fate.victim); }, check, 14);
    EXPECT_GE(warnings, 4) << "three calls about its size and one about its title";
    EXPECT_GE(successes, 2);
    RemoveTrayIcon();
}

}  // namespace
}  // namespace morvane::test
