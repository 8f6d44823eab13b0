// Which commands the user is told about, and what "Add / Remove (min size)" records.

#include "app/reported_commands.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "base/owners.h"
#include "base/win_shell.h"
#include "desktop/engine_fixture.h"
#include "pin/engine.h"
#include "pin/pin_operations.h"
#include "support/test_environment.h"
#include "support/test_files.h"
#include "support/tray_recorder.h"
#include "support/window_owner.h"
#include "support/window_state.h"
#include "ui/tray_icon.h"

namespace morvane::test {
namespace {

class MinSizeCommandTest : public EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        WriteSettings("");
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

    // Expects that there has been none, which the next one shows.
    void ExpectNoBalloon() {
        ShowBalloon(L"Morvane", L"the only one", BalloonKind::BalloonInfo);
        ExpectBalloon(L"the only one", NIIF_INFO);
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
    LoadSettings("notepad\n");
    PinWindowAtCurrentSize(Window(L"a.txt - Notepad"));
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

TEST_F(MinSizeCommandTest, WindowThatCannotBeReadIsReportedAndChangesNothing) {
    const HWND dead = Window(L"Dead");
    Other().Destroy(dead);
    const HWND minimised = Window(L"Minimised");
    Other().Minimise(minimised);
    const auto popup = [this](const wchar_t* title, int width, int height) {
        return Other().Create(
            {.title = title, .style = WS_POPUP, .width = width, .height = height});
    };
    constexpr const wchar_t* NoSize = L"Could not read this window's size.";
    const struct {
        const char* name;
        HWND window;
        const wchar_t* text;
    } cases[] = {
        {"dead", dead, NoSize},
        {"minimised", minimised, NoSize},
        {"flat", popup(L"Flat", 50, 0), NoSize},
        {"narrow", popup(L"Narrow", 0, 50), NoSize},
        {"none", nullptr, NoSize},
        {"untitled and flat", popup(L"", 50, 0), NoSize},
        {"untitled", Window(L""), L"Could not read this window's title."},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(item.name);
        PinWindowAtCurrentSize(item.window);
        ExpectBalloon(item.text, NIIF_WARNING);
        EXPECT_EQ(ReadSettings(), "");
    }
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
    EXPECT_EQ(Engine().pinList.entries.size(), 100U);
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
    ExpectNoBalloon();
}

// Another program reads the settings file and lets nobody write.
class FailedSaveTest : public MinSizeCommandTest {
protected:
    void SetUp() override {
        MinSizeCommandTest::SetUp();
        if (!IsSkipped()) {
            LoadSettings("beta\n");
            reader_ = HoldFile(SettingsPath(), GENERIC_READ, FILE_SHARE_READ);
            ASSERT_TRUE(reader_);
        }
    }
    void TearDown() override {
        if (!IsSkipped()) {
            EXPECT_EQ(ReadSettings(), "beta\n") << "could not be saved";
        }
        reader_.reset();
        MinSizeCommandTest::TearDown();
    }

private:
    FileHandle reader_;
};

TEST_F(FailedSaveTest, AddingOrRemovingAWindowIsSilentAndUndoneByThePass) {
    const HWND alpha = Window(L"Alpha");
    const HWND beta = Window(L"Beta");
    ToggleWindow(L"Alpha");
    EXPECT_FALSE(IsTopmost(alpha));
    ToggleWindow(L"Beta");
    EXPECT_TRUE(IsTopmost(beta));
    AddWindow(L"Gamma");
    EXPECT_EQ(Engine().pinList.entries.size(), 2U) << "until the file is read again";
    ExpectNoBalloon();
}

TEST_F(FailedSaveTest, MasterSwitchIsSilent) {
    SetPinning(false);
    EXPECT_FALSE(Engine().pinList.pinning) << "until the file is read again";
    SetPinning(true);
    ExpectNoBalloon();
}

TEST_F(FailedSaveTest, MeasuredWindowIsReportedAsDone) {
    PinWindowAtCurrentSize(Window(L"Beta"));
    ExpectBalloon(L"Minimum size set to 400 x 300.", NIIF_INFO);
}

}  // namespace
}  // namespace morvane::test
