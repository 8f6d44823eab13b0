// The About dialog as the user opens, reads and closes it.

#include "program/menu_scene.h"
#include "support/languages.h"
#include "support/tray.h"

namespace morvane::test {
namespace {

using AboutTest = ProgramTest;

TEST_F(AboutTest, ShowsNameAndVersionInTheCornerOfTheScreen) {
    const Program program = StartedProgram();
    ASSERT_NE(OpenMenuByIcon(program), nullptr);
    ASSERT_TRUE(Choose(program, Item::About, Way::Mouse));
    const HWND dialog = OpenedAbout(program);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(WindowTitle(dialog), L"About Morvane");
    EXPECT_EQ(ControlText(dialog, AboutBodyId), L"Morvane\n\nVersion: " + BuiltVersion());
    EXPECT_EQ(ControlText(dialog, AboutCloseId), L"Close");
    EXPECT_TRUE(IsTopmost(dialog));
    EXPECT_EQ(GetWindow(dialog, GW_OWNER), program.ControlWindow());
    RECT area{};
    ASSERT_NE(SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0), FALSE);
    EXPECT_EQ(WindowRect(dialog).right, area.right - 16);
    EXPECT_EQ(WindowRect(dialog).bottom, area.bottom - 16);
}

TEST_F(AboutTest, ClosingGivesTheTrayBackAndPassesGoOn) {
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\n");
    const HWND dialog = OpenAbout(program);
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(WaitUntil([dialog] { return GetForegroundWindow() == dialog; }));
    Click(CentreOf(WindowRect(GetDlgItem(dialog, AboutCloseId))), MouseButton::Left);
    ASSERT_TRUE(AboutCloses(program));
    EXPECT_EQ(IsWindow(dialog), FALSE);
    EXPECT_TRUE(sentinel.WaitForTimedPass());
    ASSERT_NE(OpenMenuByIcon(program), nullptr);
    EXPECT_TRUE(DismissMenu(program));
}

TEST_F(AboutTest, CommandsOfTheMenuWorkOverItAndExitEndsTheProcess) {
    const HWND target = Window(L"Target");
    const Program program = StartedProgram("Target\n", {target});
    const HWND control = program.ControlWindow();
    const HWND dialog = OpenAbout(program);
    ASSERT_NE(dialog, nullptr);
    for (const bool on : {false, true}) {
        ASSERT_NE(OpenMenuByIcon(program), nullptr);
        ASSERT_TRUE(Choose(program, Item::AlwaysOnTop, Way::Mouse));
        EXPECT_TRUE(FileBecomes(SettingsText(on, "Target\n")));
        EXPECT_TRUE(WaitUntil([=] { return IsTopmost(target) == on; }));
        EXPECT_EQ(AboutDialog(program), dialog);
    }
    ASSERT_NE(OpenMenuByIcon(program), nullptr);
    ASSERT_TRUE(Choose(program, Item::Exit, Way::Mouse));
    EXPECT_EQ(program.WaitForExit(), 0U);
    EXPECT_FALSE(IsTopmost(target));
    EXPECT_EQ(AboutDialog(program), nullptr);
    EXPECT_FALSE(TrayIconPresent(control));
}

}  // namespace
}  // namespace morvane::test
