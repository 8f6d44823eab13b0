// Every command of the tray menu, chosen by mouse and by keyboard.

#include "program/menu_scene.h"
#include "support/notepad.h"

namespace morvane::test {
namespace {

bool BecomesSized(HWND window, LONG width, LONG height) {
    return WaitUntil([=] {
        const SIZE size = WindowSize(window);
        return size.cx == width && size.cy == height;
    });
}

class MenuCommandsTest : public ProgramTest, public testing::WithParamInterface<Way> {
protected:
    [[nodiscard]] static bool Choose(const Program& program, Item item) {
        return OpenAndChoose(program, item, GetParam());
    }
    [[nodiscard]] static bool Choose(const Program& program, const Row& row) {
        return OpenAndChoose(program, row, GetParam());
    }

    // Three windows, of which the second is chosen and the others are not measured by mistake.
    [[nodiscard]] HWND MiddleWindow() {
        static_cast<void>(Other().Create({.title = L"Alpha", .x = 700, .width = 300}));
        static_cast<void>(Other().Create({.title = L"Gamma", .x = 700, .width = 300}));
        return Window(L"Beta", 410, 310);
    }

    // That a choice has pinned that window at its size.
    void ExpectPinnedAtItsSize(HWND beta, const TrayRecorder& recorder) {
        ExpectBalloon(recorder, L"Minimum size set to 410 x 310.");
        EXPECT_EQ(ReadSettings(), SettingsText(true, "Nowhere\nBeta\t410\t310\n"));
        EXPECT_TRUE(BecomesTopmost(beta));
        Other().Place(beta, 150, 120, 200, 150);
        EXPECT_TRUE(BecomesSized(beta, 410, 310));
        EXPECT_EQ(WindowRect(beta).left, 150);
        EXPECT_EQ(WindowRect(beta).top, 120);
    }
};

INSTANTIATE_TEST_SUITE_P(By, MenuCommandsTest, testing::Values(Way::Mouse, Way::Keyboard),
                         [](const testing::TestParamInfo<Way>& item) {
                             return item.param == Way::Mouse ? "Mouse" : "Keyboard";
                         });

TEST_P(MenuCommandsTest, AlwaysOnTopSwitchesPinningOffAndOn) {
    const HWND target = Window(L"Target");
    const Program program = StartedProgram("Target\n", {target});
    for (const bool on : {false, true}) {
        ASSERT_TRUE(Choose(program, Item::AlwaysOnTop));
        EXPECT_TRUE(FileBecomes(SettingsText(on, "Target\n")));
        EXPECT_TRUE(WaitUntil([=] { return IsTopmost(target) == on; }));
    }
}

TEST_P(MenuCommandsTest, AddRemoveRowPinsAndReleasesItsWindow) {
    const HWND alpha = Window(L"Alpha");
    const HWND beta = Window(L"Beta");
    const HWND gamma = Window(L"Gamma");
    const Program program = StartedProgram("Nowhere\n");
    ASSERT_TRUE(Choose(program, AddRemoveRow(L"Beta")));
    EXPECT_TRUE(FileBecomes(SettingsText(true, "Nowhere\nBeta\n")));
    EXPECT_TRUE(BecomesTopmost(beta));
    ASSERT_TRUE(Choose(program, AddRemoveRow(L"Gamma")));
    EXPECT_TRUE(FileBecomes(SettingsText(true, "Nowhere\nBeta\nGamma\n")));
    EXPECT_TRUE(BecomesTopmost(gamma));
    EXPECT_FALSE(IsTopmost(alpha));
    ASSERT_TRUE(Choose(program, AddRemoveRow(L"Beta")));
    EXPECT_TRUE(FileBecomes(SettingsText(true, "Nowhere\nGamma\n")));
    EXPECT_TRUE(BecomesOrdinary(beta));
    EXPECT_TRUE(BecomesTopmost(gamma));
}

TEST_P(MenuCommandsTest, MinSizeRowPinsItsWindowAtItsSize) {
    const TrayRecorder recorder;
    const HWND beta = MiddleWindow();
    const Program program = StartedProgram("Nowhere\n");
    ASSERT_TRUE(Choose(program, MinSizeRow(L"Beta")));
    ExpectPinnedAtItsSize(beta, recorder);
}

TEST_P(MenuCommandsTest, ActiveWindowRowPinsTheWindowInFront) {
    const TrayRecorder recorder;
    const HWND beta = MiddleWindow();
    const Program program = StartedProgram("Nowhere\n");
    ASSERT_TRUE(Other().BringToForeground(beta));
    ASSERT_TRUE(Choose(program, ActiveWindowRow()));
    ExpectPinnedAtItsSize(beta, recorder);
}

TEST_P(MenuCommandsTest, OpenSettingsShowsTheFileInNotepadWhichOutlivesTheProgram) {
    const Program program = StartedProgram("Target\n");
    ASSERT_TRUE(Choose(program, Item::OpenSettings));
    EXPECT_TRUE(WaitUntil([] {
        const std::vector<HWND> editors = NotepadWindows();
        return editors.size() == 1 &&
               WindowTitle(editors.front()).find(L"config.txt") != std::wstring::npos;
    }));
    const HWND target = Window(L"Target");
    EXPECT_TRUE(BecomesTopmost(target));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(NotepadProcesses().size(), 1U);
    EndNotepads();
    EXPECT_EQ(ReadSettings(), "Target\n");
}

// The timer alone could not have made so many passes in the time.
TEST_P(MenuCommandsTest, ApplyNowRunsAPassAtOnce) {
    constexpr int Rounds = 6;
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\n");
    ASSERT_TRUE(sentinel.WaitForTimedPass());
    const std::size_t before = sentinel.PassTicks().size();
    const ULONGLONG start = GetTickCount64();
    for (int round = 0; round < Rounds; ++round) {
        ASSERT_TRUE(Choose(program, Item::ApplyNow));
    }
    std::size_t passes = 0;
    EXPECT_TRUE(WaitUntil([&] {
        passes = sentinel.PassTicks().size() - before;
        return passes > (GetTickCount64() - start) / 500 + 2;
    })) << passes;
}

TEST_P(MenuCommandsTest, StartWithWindowsMakesAndRemovesTheShortcut) {
    const TrayRecorder recorder;
    const Program program = StartedProgram();
    ASSERT_TRUE(Choose(program, Item::StartWithWindows));
    ExpectBalloon(recorder, L"Morvane will start when you sign in to Windows.");
    EXPECT_TRUE(PathExists(StartupShortcut()));
    ASSERT_TRUE(Choose(program, Item::StartWithWindows));
    ExpectBalloon(recorder, L"Morvane will no longer start with Windows.", NIIF_INFO, 1);
    EXPECT_FALSE(PathExists(StartupShortcut()));
    EXPECT_EQ(ReadSettings(), SettingsText(true, "")) << "not recorded there";
}

TEST_P(MenuCommandsTest, AboutOpensTheDialog) {
    const Program program = StartedProgram();
    ASSERT_TRUE(Choose(program, Item::About));
    EXPECT_NE(OpenedAbout(program), nullptr);
}

TEST_P(MenuCommandsTest, ExitReleasesTheWindowsAndEndsTheProcess) {
    const HWND target = Window(L"Target");
    const Program program = StartedProgram("Target\n", {target});
    ASSERT_TRUE(Choose(program, Item::Exit));
    EXPECT_EQ(program.WaitForExit(), 0U);
    EXPECT_FALSE(IsTopmost(target));
    EXPECT_EQ(ReadSettings(), "Target\n");
}

using MenuClickTest = ProgramTest;

TEST_F(MenuClickTest, RightButtonChoosesToo) {
    const HWND target = Window(L"Target");
    const Program program = StartedProgram("Nowhere\n");
    for (const bool on : {false, true}) {
        const HWND menu = OpenMenu(program);
        ASSERT_NE(menu, nullptr);
        Click(CentreOf(ItemRect(menu, Item::AlwaysOnTop)), MouseButton::Right);
        ASSERT_TRUE(MenuCloses(program));
        EXPECT_TRUE(FileBecomes(SettingsText(on, "Nowhere\n")));
    }
    ASSERT_NE(OpenMenu(program), nullptr);
    const HWND submenu = OpenSubmenu(program, Item::AddRemove, Way::Mouse);
    ASSERT_NE(submenu, nullptr);
    Click(CentreOf(RowRect(submenu, AddRemoveRow(L"Target"))), MouseButton::Right);
    ASSERT_TRUE(MenuCloses(program));
    EXPECT_TRUE(FileBecomes(SettingsText(true, "Nowhere\nTarget\n")));
    EXPECT_TRUE(BecomesTopmost(target));
}

// Whether or not the click deactivates the window before the menu opens, the user means that
// window.
TEST_F(MenuClickTest, ActiveWindowSurvivesTheClickOnTheIcon) {
    const Sentinel sentinel(Other());
    const HWND target = Window(L"Target", 410, 310);
    const Program program = StartedProgram("Sentinel\n");
    ASSERT_TRUE(Other().BringToForeground(target));
    // Seen in front before the click, which may put the taskbar there.
    ASSERT_TRUE(sentinel.WaitForTimedPass());
    ASSERT_NE(OpenMenuByIcon(program), nullptr);
    ASSERT_TRUE(Choose(program, ActiveWindowRow(), Way::Mouse));
    EXPECT_TRUE(FileBecomes(SettingsText(true, "Sentinel\nTarget\t410\t310\n")));
}

}  // namespace
}  // namespace morvane::test
