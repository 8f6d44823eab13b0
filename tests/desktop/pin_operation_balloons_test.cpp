// A command that cannot save the list does not report the failure.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "app/reported_commands.h"
#include "base/owners.h"
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

class FailedSaveTest : public EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        LoadSettings("beta\n");
        AddTrayIcon(owner_.get(), GetModuleHandleW(nullptr));
        recorder_.Forget();
        // Others may read but not write.
        reader_.reset(CreateFileW(SettingsPath().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(reader_);
    }
    void TearDown() override {
        RemoveTrayIcon();
        reader_.reset();
        EngineTest::TearDown();
    }

    [[nodiscard]] std::vector<TrayCall> Balloons() const { return recorder_.Calls(); }

private:
    // Replaces the taskbar to record balloons in full.
    TrayRecorder recorder_;
    WindowOwner owner_ = MessageOnlyWindow();
    FileHandle reader_;
};

TEST_F(FailedSaveTest, AddingAWindowIsSilent) {
    const HWND window = Window(L"Alpha");
    ToggleWindow(L"Alpha");
    EXPECT_EQ(ReadSettings(), "beta\n") << "could not be saved";
    EXPECT_FALSE(IsTopmost(window)) << "the pass reread the file";
    EXPECT_TRUE(Balloons().empty());
}

TEST_F(FailedSaveTest, RemovingAWindowIsSilent) {
    const HWND window = Window(L"Beta");
    ToggleWindow(L"Beta");
    EXPECT_EQ(ReadSettings(), "beta\n") << "could not be saved";
    EXPECT_TRUE(IsTopmost(window)) << "the pass reread the file";
    EXPECT_TRUE(Balloons().empty());
}

TEST_F(FailedSaveTest, MasterSwitchIsSilent) {
    SetPinning(false);
    EXPECT_FALSE(Engine().pinList.pinning) << "until the file is read again";
    SetPinning(true);
    EXPECT_EQ(ReadSettings(), "beta\n") << "could not be saved";
    EXPECT_TRUE(Balloons().empty());
}

TEST_F(FailedSaveTest, MeasuredWindowIsReportedAsDone) {
    const HWND window = Window(L"Beta");
    PinWindowAtCurrentSize(window);
    EXPECT_EQ(ReadSettings(), "beta\n") << "could not be saved";
    ASSERT_EQ(Balloons().size(), 1U);
    EXPECT_EQ(Balloons()[0].infoTitle, L"Morvane");
    EXPECT_EQ(Balloons()[0].info, L"Minimum size set to 400 x 300.");
    EXPECT_EQ(Balloons()[0].infoFlags, static_cast<DWORD>(NIIF_INFO));
}

}  // namespace
}  // namespace morvane::test
