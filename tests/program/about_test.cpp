// The About dialog as the user opens, reads and closes it.

#include "program/menu_scene.h"
#include "support/languages.h"
#include "support/tray.h"

namespace morvane::test {
namespace {

using AboutTest = ProgramTest;

void PressCloseButton(HWND dialog) {
    Click(CentreOf(WindowRect(GetDlgItem(dialog, AboutCloseId))), MouseButton::Left);
}

// The close box is as wide as it is high, at the right end of the caption.
void PressCloseBox(HWND dialog) {
    const RECT frame = WindowRect(dialog);
    const LONG edge = GetSystemMetrics(SM_CYFIXEDFRAME);
    const LONG half = GetSystemMetrics(SM_CYCAPTION) / 2;
    Click({frame.right - edge - half, frame.top + edge + half}, MouseButton::Left);
}

struct Closing {
    const char* name;
    void (*close)(HWND dialog);
};

constexpr Closing Closings[] = {
    {"button", PressCloseButton},
    {"Enter", [](HWND /*dialog*/) { TapKey(VK_RETURN); }},
    {"Escape", [](HWND /*dialog*/) { TapKey(VK_ESCAPE); }},
    {"space bar", [](HWND /*dialog*/) { TapKey(VK_SPACE); }},
    {"close box", PressCloseBox},
    {"close message", [](HWND dialog) { PostMessageW(dialog, WM_CLOSE, 0, 0); }},
};

bool IsInFront(HWND dialog) {
    return WaitUntil([dialog] { return GetForegroundWindow() == dialog; });
}

TEST_F(AboutTest, ShowsNameAndVersion) {
    const Program program = StartedProgram();
    ASSERT_NE(OpenMenuByIcon(program), nullptr);
    ASSERT_TRUE(Choose(program, Item::About, Way::Mouse));
    ASSERT_TRUE(WaitUntil([&] { return AboutDialog(program) != nullptr; }));
    const HWND dialog = AboutDialog(program);
    EXPECT_EQ(WindowTitle(dialog), L"About Morvane");
    EXPECT_EQ(ControlText(dialog, AboutBodyId), L"Morvane\n\nVersion: 26.9.12.2157");
    EXPECT_EQ(ControlText(dialog, AboutCloseId), L"Close");
    EXPECT_TRUE(IsTopmost(dialog));
    EXPECT_EQ(GetWindow(dialog, GW_OWNER), program.ControlWindow());
}

TEST_F(AboutTest, EveryWayOfClosingGivesTheTrayBack) {
    const Program program = StartedProgram();
    for (const Closing& item : Closings) {
        const HWND dialog = OpenAbout(program);
        ASSERT_NE(dialog, nullptr) << item.name;
        ASSERT_TRUE(IsInFront(dialog)) << item.name;
        EXPECT_EQ(IsWindowEnabled(program.ControlWindow()), FALSE) << item.name;
        item.close(dialog);
        ASSERT_TRUE(AboutCloses(program)) << item.name;
        EXPECT_EQ(IsWindow(dialog), FALSE) << item.name;
        ASSERT_NE(OpenMenuByIcon(program), nullptr) << item.name;
        EXPECT_TRUE(DismissMenu(program)) << item.name;
    }
}

TEST_F(AboutTest, PassesGoOnAfterItIsClosed) {
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    const HWND dialog = OpenAbout(program);
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(IsInFront(dialog));
    TapKey(VK_ESCAPE);
    ASSERT_TRUE(AboutCloses(program));
    EXPECT_TRUE(sentinel.WaitForTimedPass());
}

TEST_F(AboutTest, SecondCommandBringsTheOpenDialogToTheFront) {
    Actor actor;
    const HWND other = actor.Create({.title = L"Other"});
    const Program program = StartedProgram();
    const HWND dialog = OpenAbout(program);
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(actor.BringToForeground(other));
    ASSERT_TRUE(program.SendCommand(AboutCommand));
    EXPECT_TRUE(IsInFront(dialog));
    EXPECT_EQ(VisibleWindowsOfClass(L"MorvaneAboutDialog"), std::vector<HWND>{dialog});
    PostMessageW(dialog, WM_CLOSE, 0, 0);
    EXPECT_TRUE(AboutCloses(program));
}

TEST_F(AboutTest, CommandsOfTheMenuWorkOverIt) {
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Target"})));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(target));
    const HWND dialog = OpenAbout(program);
    ASSERT_NE(dialog, nullptr);
    ASSERT_NE(OpenMenuByIcon(program), nullptr);
    ASSERT_TRUE(Choose(program, Item::AlwaysOnTop, Way::Mouse));
    EXPECT_TRUE(FileBecomes(SettingsText(false, {"Target"})));
    EXPECT_TRUE(BecomesOrdinary(target));
    EXPECT_EQ(AboutDialog(program), dialog);
    PressCloseButton(dialog);
    EXPECT_TRUE(AboutCloses(program));
}

TEST_F(AboutTest, ExitChosenOverItEndsTheProcess) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    const HWND control = program.ControlWindow();
    ASSERT_TRUE(BecomesTopmost(target));
    ASSERT_NE(OpenAbout(program), nullptr);
    ASSERT_NE(OpenMenuByIcon(program), nullptr);
    ASSERT_TRUE(Choose(program, Item::Exit, Way::Mouse));
    EXPECT_EQ(program.WaitForExit(), 0U);
    EXPECT_FALSE(IsTopmost(target));
    EXPECT_EQ(AboutDialog(program), nullptr);
    EXPECT_FALSE(TrayIconPresent(control));
    const Program next;
    EXPECT_NE(next.WaitForControlWindow(), nullptr);
    EXPECT_EQ(next.ExitByCommand(), 0U);
}

// Bottom right corner of the work area, 16 pixels from its edges, whatever the text.
void ExpectInTheCorner(HWND dialog) {
    RECT area{};
    ASSERT_NE(SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0), FALSE);
    const RECT rect = WindowRect(dialog);
    EXPECT_EQ(rect.right, area.right - 16);
    EXPECT_EQ(rect.bottom, area.bottom - 16);
    EXPECT_EQ(rect.right - rect.left, 420);
    RECT client{};
    GetClientRect(dialog, &client);
    EXPECT_EQ(WindowSize(GetDlgItem(dialog, AboutBodyId)).cx, client.right - 32);
    EXPECT_EQ(WindowSize(GetDlgItem(dialog, AboutCloseId)).cy, 30);
    POINT clientRight{client.right, 0};
    ClientToScreen(dialog, &clientRight);
    EXPECT_EQ(WindowRect(GetDlgItem(dialog, AboutCloseId)).right, clientRight.x - 16);
}

TEST_F(AboutTest, SpeaksTheLanguageOfTheProgram) {
    for (const auto& [language, code, longCode] : AllLanguages) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(code)));
        EmptyStartupFolder();
        const TrayRecorder recorder;
        const Program program = StartedProgram({{L"MORVANE_LANG", code}});
        ASSERT_TRUE(OpenAndChoose(program, Item::StartWithWindows, Way::Keyboard));
        EXPECT_EQ(WaitForBalloon(recorder).info, ExpectedText(StrStartupEnabled, language));
        EXPECT_EQ(WaitForBalloon(recorder).infoTitle, L"Morvane");
        ASSERT_TRUE(OpenAndChoose(program, Item::About, Way::Keyboard));
        ASSERT_TRUE(WaitUntil([&] {
            return AboutDialog(program) != nullptr &&
                   IsWindowEnabled(program.ControlWindow()) == FALSE;
        }));
        const HWND dialog = AboutDialog(program);
        EXPECT_EQ(WindowTitle(dialog), ExpectedText(StrAboutTitle, language));
        EXPECT_EQ(ControlText(dialog, AboutBodyId),
                  L"Morvane\n\n" + ExpectedFormat(StrAboutVersion, L"26.9.12.2157", language));
        EXPECT_EQ(ControlText(dialog, AboutCloseId), ExpectedText(StrClose, language));
        ExpectInTheCorner(dialog);
        PressCloseButton(dialog);
        EXPECT_TRUE(AboutCloses(program));
        EXPECT_EQ(program.ExitByCommand(), 0U);
    }
}

}  // namespace
}  // namespace morvane::test
