// "Add / Remove (min size)": what is recorded about the window, and what the user is told.

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "app/reported_commands.h"
#include "base/process.h"
#include "base/win_shell.h"
#include "desktop/engine_fixture.h"
#include "pin/engine.h"
#include "pin/pin_operations.h"
#include "support/test_environment.h"
#include "support/tray_recorder.h"
#include "support/window_owner.h"
#include "support/window_state.h"
#include "ui/tray_icon.h"

namespace morvane::test {
namespace {

using Requests = std::vector<std::string>;

class MinSizeCommandTest : public EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        ASSERT_TRUE(WriteSettings(""));
        AddTrayIcon(owner_.get(), GetModuleHandleW(nullptr));
        recorder_.Forget();
    }
    void TearDown() override {
        RemoveTrayIcon();
        EngineTest::TearDown();
    }

    // Expects exactly one balloon since the last call, with this text.
    void ExpectBalloon(std::wstring_view text, DWORD kind) {
        const std::vector<TrayCall> calls = recorder_.Calls();
        recorder_.Forget();
        ASSERT_EQ(calls.size(), 1U);
        EXPECT_EQ(calls[0].message, static_cast<DWORD>(NIM_MODIFY));
        EXPECT_EQ(calls[0].infoTitle, L"Morvane");
        EXPECT_EQ(calls[0].info, text);
        EXPECT_EQ(calls[0].infoFlags, kind);
    }

private:
    // Replaces the taskbar to record balloons in full.
    TrayRecorder recorder_;
    WindowOwner owner_ = MessageOnlyWindow();
};

TEST_F(MinSizeCommandTest, SizeOfTheWindowIsRecordedAndReported) {
    const HWND window = Window(L"Alpha");
    Other().Place(window, 60, 50, 1000, 640);
    Other().ForgetRecords(window);
    PinWindowAtCurrentSize(window);
    ExpectBalloon(L"Minimum size set to 1000 x 640.", NIIF_INFO);
    EXPECT_EQ(ReadSettings(), WrittenSettings("Alpha\t1000\t640\n"));
    EXPECT_EQ(Asked(window), Requests({TopmostRequest}));
    Other().Place(window, 60, 50, 500, 340);
    PinWindowAtCurrentSize(window);
    ExpectBalloon(L"Minimum size set to 500 x 340.", NIIF_INFO);
    EXPECT_EQ(ReadSettings(), WrittenSettings("Alpha\t500\t340\n")) << "not removed";
}

TEST_F(MinSizeCommandTest, ShortPatternGetsTheSizeAndNothingIsAdded) {
    const HWND window = Window(L"a.txt - Notepad");
    LoadSettings("notepad\n");
    PinWindowAtCurrentSize(window);
    ExpectBalloon(L"Minimum size set to 400 x 300.", NIIF_INFO);
    EXPECT_EQ(ReadSettings(), WrittenSettings("notepad\t400\t300\n"));
}

TEST_F(MinSizeCommandTest, SizeBeyondTheLimitIsReportedInFullAndStoredClamped) {
    const HWND window = Other().Create(
        {.title = L"Wide", .style = WS_POPUP, .x = 0, .y = 0, .width = 9000, .height = 600});
    ASSERT_EQ(WindowSize(window).cx, 9000);
    PinWindowAtCurrentSize(window);
    ExpectBalloon(L"Minimum size set to 9000 x 600.", NIIF_INFO);
    EXPECT_EQ(ReadSettings(), WrittenSettings("Wide\t8192\t600\n"));
    EXPECT_EQ(WindowSize(window).cx, 9000);
}

TEST_F(MinSizeCommandTest, UnreadableSizeIsReportedAndChangesNothing) {
    const HWND dead = Window(L"Dead");
    Other().Destroy(dead);
    const HWND minimised = Window(L"Minimised");
    Other().Minimise(minimised);
    const HWND flat =
        Other().Create({.title = L"Flat", .style = WS_POPUP, .width = 50, .height = 0});
    const HWND narrow =
        Other().Create({.title = L"Narrow", .style = WS_POPUP, .width = 0, .height = 50});
    for (const HWND window : {dead, minimised, flat, narrow, static_cast<HWND>(nullptr)}) {
        PinWindowAtCurrentSize(window);
        ExpectBalloon(L"Could not read this window's size.", NIIF_WARNING);
        EXPECT_EQ(ReadSettings(), "");
    }
}

TEST_F(MinSizeCommandTest, UntitledWindowIsReportedAndChangesNothing) {
    PinWindowAtCurrentSize(Window(L""));
    ExpectBalloon(L"Could not read this window's title.", NIIF_WARNING);
    EXPECT_EQ(ReadSettings(), "");
    const HWND both = Other().Create({.title = L"", .style = WS_POPUP, .width = 0, .height = 0});
    PinWindowAtCurrentSize(both);
    ExpectBalloon(L"Could not read this window's size.", NIIF_WARNING);
}

TEST_F(MinSizeCommandTest, FullListTakesNewSizesForKnownWindowsOnly) {
    LoadSettings(FullSettings());
    const std::string asWritten = ReadSettings().value_or("");
    PinWindowAtCurrentSize(Window(L"Unknown"));
    ExpectBalloon(L"Can't add more windows (limit reached).", NIIF_WARNING);
    EXPECT_EQ(ReadSettings(), asWritten);
    PinWindowAtCurrentSize(Window(L"My entry-99"));
    ExpectBalloon(L"Minimum size set to 400 x 300.", NIIF_INFO);
    EXPECT_EQ(Engine().pinList.entries.back().minWidth, 400);
    EXPECT_EQ(Engine().pinList.entries.size(), MaxPinEntries);
}

TEST_F(MinSizeCommandTest, EngineIsBoundBeforeTheSizeIsSaved) {
    const HWND control = Window(L"Control");
    Process().controlWindow = control;
    Engine().settingsPath.clear();
    PinWindowAtCurrentSize(Window(L"Alpha"));
    ExpectBalloon(L"Minimum size set to 400 x 300.", NIIF_INFO);
    EXPECT_EQ(Engine().settingsPath, SettingsPath());
    EXPECT_EQ(Engine().ownWindow, control);
    EXPECT_EQ(ReadSettings(), WrittenSettings("Alpha\t400\t300\n"));
}

TEST_F(MinSizeCommandTest, TitleIsReadUpTo511Units) {
    PinWindowAtCurrentSize(Window(std::wstring(600, L'x')));
    ExpectBalloon(L"Minimum size set to 400 x 300.", NIIF_INFO);
    EXPECT_EQ(ReadSettings(), WrittenSettings(std::string(511, 'x') + "\t400\t300\n"));
}

TEST_F(MinSizeCommandTest, ListCommandsShowNoBalloons) {
    LoadSettings(FullSettings());
    ToggleWindow(L"One more");
    ToggleWindow(L"entry-3.");
    SetPinning(false);
    SetPinning(true);
    ShowBalloon(L"Morvane", L"the only one", BalloonKind::BalloonInfo);
    ExpectBalloon(L"the only one", NIIF_INFO);
}

}  // namespace
}  // namespace morvane::test
