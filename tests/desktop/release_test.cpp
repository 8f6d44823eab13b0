// Releasing: which windows get a request, which are only forgotten, and what stays unchanged.

#include <algorithm>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

#include "desktop/engine_fixture.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "pin/pin_operations.h"
#include "support/import_watch.h"
#include "support/test_environment.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

using namespace std::chrono_literals;

using ReleaseTest = EngineTest;

TEST_F(ReleaseTest, EveryRememberedWindowIsAskedOnceToBeOrdinary) {
    const HWND alpha = Window(L"Alpha");
    const HWND beta = Window(L"Beta");
    ApplySettings("alpha\t600\t0\nbeta\n");
    Other().ForgetRecords(alpha);
    Other().ForgetRecords(beta);
    ReleaseAll();
    for (const HWND window : {alpha, beta}) {
        EXPECT_EQ(Asked(window), Requests({OrdinaryRequest}));
        EXPECT_FALSE(IsTopmost(window));
        EXPECT_NE(IsWindowVisible(window), FALSE);
    }
    EXPECT_TRUE(Engine().pinnedWindows.empty());
    EXPECT_EQ(WindowSize(alpha).cx, 600) << "the size is kept";
    ReleaseAll();
    EXPECT_EQ(Asked(alpha).size(), 1U) << "nothing is remembered any more";
}

// A request waits for its window, and a message sent meanwhile may be the command that releases.
TEST_F(ReleaseTest, ReleaseDuringAReleaseLeavesOutWhatIsReleased) {
    const std::vector<HWND> windows = Other().CreateMany(3, {.title = L"Alpha "});
    ApplySettings("alpha\n");
    std::vector<HWND> asked;
    const ImportWatch<decltype(&SetWindowPos)> requests(
        "SetWindowPos", [&asked](HWND window, HWND, int, int, int, int, UINT) {
            asked.push_back(window);
            if (asked.size() == 2) {
                ReleaseAll();
            }
        });
    ReleaseAll();
    // The inner release leaves out the first window; the outer one still asks those it began with.
    ASSERT_EQ(asked.size(), 5U);
    EXPECT_EQ(std::count(asked.begin(), asked.end(), asked[0]), 1);
    for (const HWND window : windows) {
        EXPECT_FALSE(IsTopmost(window));
    }
    EXPECT_TRUE(Engine().pinnedWindows.empty());
}

TEST_F(ReleaseTest, WindowThatWasTopmostBeforeItWasPinnedIsReleasedToo) {
    const HWND window = Other().Create({.title = L"Alpha", .exStyle = WS_EX_TOPMOST});
    ApplySettings("alpha\n");
    ApplySettings("@pinning=0\nalpha\n");
    EXPECT_FALSE(IsTopmost(window));
}

TEST_F(ReleaseTest, PinningSwitchedOffInTheFileReleasesOnce) {
    const HWND window = Window(L"Alpha");
    ApplySettings("alpha\n");
    Other().ForgetRecords(window);
    ApplySettings("alpha\n@pinning=off\n");
    EXPECT_EQ(Asked(window), Requests({OrdinaryRequest}));
    EXPECT_TRUE(Engine().pinnedWindows.empty());
    ApplyAll();
    EXPECT_EQ(Asked(window).size(), 1U);
    ApplySettings("alpha\n@pinning=1\n");
    EXPECT_TRUE(IsTopmost(window));
}

TEST_F(ReleaseTest, ReleaseDoesNotTakeTheFocus) {
    const HWND pinned = Window(L"Alpha");
    const HWND working = Window(L"Document");
    ApplySettings("alpha\n");
    ASSERT_TRUE(Other().BringToForeground(working));
    ReleaseAll();
    EXPECT_FALSE(IsTopmost(pinned));
    EXPECT_EQ(GetForegroundWindow(), working);
}

TEST_F(ReleaseTest, MinimisedWindowIsReleasedAndStaysMinimised) {
    const HWND window = Window(L"Alpha");
    ApplySettings("alpha\n");
    Other().Minimise(window);
    ReleaseAll();
    EXPECT_FALSE(IsTopmost(window));
    EXPECT_NE(IsIconic(window), FALSE);
}

TEST_F(ReleaseTest, DeadAndDyingWindowsAreDroppedAndTheOthersReleased) {
    std::vector<HWND> windows = Other().CreateMany(4, {.title = L"Alpha "});
    // In the order in which a pass pins and remembers them: the dead ones in between.
    std::sort(windows.begin(), windows.end());
    ApplySettings("alpha\n");
    Other().Destroy(windows[1]);
    Other().DieOnRequest(windows[2], 1);
    ReleaseAll();
    EXPECT_FALSE(IsTopmost(windows[0]));
    EXPECT_EQ(IsWindow(windows[2]), FALSE);
    EXPECT_FALSE(IsTopmost(windows[3]));
    EXPECT_TRUE(Engine().pinnedWindows.empty());
}

TEST_F(ReleaseTest, RefusingWindowIsForgottenToo) {
    const HWND window = Window(L"Alpha");
    ApplySettings("alpha\n");
    Other().Refuse(window);
    ReleaseAll();
    EXPECT_TRUE(IsTopmost(window));
    EXPECT_TRUE(Engine().pinnedWindows.empty());
}

TEST_F(ReleaseTest, HungWindowDelaysTheReleaseAndIsReleased) {
    const HWND window = Window(L"Alpha");
    ApplySettings("alpha\n");
    constexpr auto HangTime = 500ms;
    const auto start = std::chrono::steady_clock::now();
    Other().Hang(HangTime);
    ReleaseAll();
    EXPECT_GE(std::chrono::steady_clock::now() - start, HangTime);
    EXPECT_FALSE(IsTopmost(window));
}

TEST_F(ReleaseTest, WindowThatNoLongerQualifiesIsForgottenUnchangedAndNotReleasedLater) {
    const struct {
        const char* name;
        std::function<void(HWND)> disqualify;
    } cases[] = {
        {"title changed", [this](HWND window) { Other().SetTitle(window, L"Gamma"); }},
        {"title taken away", [this](HWND window) { Other().SetTitle(window, L""); }},
        {"hidden", [this](HWND window) { Other().Hide(window); }},
        {"owned", [this](HWND window) { Other().SetOwner(window, Window(L"Owner")); }},
        {"protected",
         [this](HWND window) { Other().SetTitle(window, L"Alpha - Windows Security"); }},
        {"own window", [](HWND window) { Engine().ownWindow = window; }},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(item.name);
        const HWND window = Other().Create({.className = L"#32770", .title = L"Alpha"});
        const HWND kept = Window(L"Alpha too");
        ApplySettings("alpha\n");
        ASSERT_TRUE(IsTopmost(window));
        item.disqualify(window);
        Other().ForgetRecords(window);
        ApplyAll();
        EXPECT_EQ(Engine().pinnedWindows, PinnedWindowSet({kept}));
        SetPinning(false);
        EXPECT_TRUE(Asked(window).empty());
        EXPECT_TRUE(IsTopmost(window));
        EXPECT_FALSE(IsTopmost(kept));
        Other().Destroy(kept);
        Other().Destroy(window);
    }
}

TEST_F(ReleaseTest, EntryRemovedFromTheFileLeavesItsWindowsTopmost) {
    const HWND window = Window(L"Alpha");
    ApplySettings("alpha\n");
    Other().ForgetRecords(window);
    ApplySettings("beta\n");
    ApplySettings("@pinning=0\n");
    EXPECT_TRUE(Asked(window).empty());
    EXPECT_TRUE(IsTopmost(window));
}

TEST_F(ReleaseTest, ForgottenWindowIsRememberedAgainOnceItQualifies) {
    const HWND window = Window(L"Alpha");
    ApplySettings("alpha\n");
    Other().SetTitle(window, L"Gamma");
    ApplyAll();
    ASSERT_TRUE(Engine().pinnedWindows.empty());
    Other().SetTitle(window, L"alpha again");
    ApplyAll();
    EXPECT_EQ(Engine().pinnedWindows, PinnedWindowSet({window}));
    ReleaseAll();
    EXPECT_FALSE(IsTopmost(window));
}

TEST_F(ReleaseTest, PruningKeepsMinimisedWindowsAndAsksNothing) {
    const HWND kept = Window(L"Alpha");
    const HWND minimised = Window(L"Alpha minimised");
    ApplySettings("alpha\n");
    Other().Minimise(minimised);
    Other().ForgetRecords(kept);
    PruneRemembered();
    EXPECT_EQ(Engine().pinnedWindows, PinnedWindowSet({kept, minimised}));
    EXPECT_TRUE(Asked(kept).empty());
}

}  // namespace
}  // namespace morvane::test
