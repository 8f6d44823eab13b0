// Every command of the tray menu, chosen by mouse and by keyboard.

#include "program/menu_scene.h"

namespace morvane::test {
namespace {

using MenuCommandsTest = ProgramTest;

bool BecomesSized(HWND window, LONG width, LONG height) {
    return WaitUntil([=] {
        const SIZE size = WindowSize(window);
        return size.cx == width && size.cy == height;
    });
}

TEST_F(MenuCommandsTest, AlwaysOnTopSwitchesPinningOffAndOn) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(target));
    for (const Way way : Ways) {
        ASSERT_TRUE(OpenAndChoose(program, Item::AlwaysOnTop, way)) << NameOf(way);
        EXPECT_TRUE(FileBecomes(SettingsText(false, {"Target"}))) << NameOf(way);
        EXPECT_TRUE(BecomesOrdinary(target)) << NameOf(way);
        ASSERT_TRUE(OpenAndChoose(program, Item::AlwaysOnTop, way)) << NameOf(way);
        EXPECT_TRUE(FileBecomes(SettingsText(true, {"Target"}))) << NameOf(way);
        EXPECT_TRUE(BecomesTopmost(target)) << NameOf(way);
    }
}

TEST_F(MenuCommandsTest, AddRemoveRowPinsAndReleasesItsWindow) {
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Nowhere"})));
    Actor actor;
    const HWND alpha = actor.Create({.title = L"Alpha"});
    const HWND beta = actor.Create({.title = L"Beta"});
    const HWND gamma = actor.Create({.title = L"Gamma"});
    const Program program = StartedProgram();
    for (const Way way : Ways) {
        ASSERT_TRUE(OpenAndChoose(program, AddRemoveRow(L"Beta"), way)) << NameOf(way);
        EXPECT_TRUE(FileBecomes(SettingsText(true, {"Nowhere", "Beta"}))) << NameOf(way);
        EXPECT_TRUE(BecomesTopmost(beta)) << NameOf(way);
        ASSERT_TRUE(OpenAndChoose(program, AddRemoveRow(L"Gamma"), way)) << NameOf(way);
        EXPECT_TRUE(FileBecomes(SettingsText(true, {"Nowhere", "Beta", "Gamma"}))) << NameOf(way);
        EXPECT_TRUE(BecomesTopmost(gamma)) << NameOf(way);
        EXPECT_FALSE(IsTopmost(alpha)) << NameOf(way);
        for (const wchar_t* title : {L"Beta", L"Gamma"}) {
            ASSERT_TRUE(OpenAndChoose(program, AddRemoveRow(title), way)) << NameOf(way);
        }
        EXPECT_TRUE(FileBecomes(SettingsText(true, {"Nowhere"}))) << NameOf(way);
        EXPECT_TRUE(BecomesOrdinary(beta)) << NameOf(way);
        EXPECT_TRUE(BecomesOrdinary(gamma)) << NameOf(way);
    }
}

TEST_F(MenuCommandsTest, RightButtonChoosesToo) {
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Nowhere"})));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    HWND menu = OpenMenu(program);
    ASSERT_NE(menu, nullptr);
    Click(CentreOf(ItemRect(menu, Item::AlwaysOnTop)), MouseButton::Right);
    ASSERT_TRUE(MenuCloses(program));
    EXPECT_TRUE(FileBecomes(SettingsText(false, {"Nowhere"})));
    menu = OpenMenu(program);
    ASSERT_NE(menu, nullptr);
    Click(CentreOf(ItemRect(menu, Item::AlwaysOnTop)), MouseButton::Right);
    ASSERT_TRUE(MenuCloses(program));
    EXPECT_TRUE(FileBecomes(SettingsText(true, {"Nowhere"})));
    ASSERT_NE(OpenMenu(program), nullptr);
    const HWND submenu = OpenSubmenu(program, Item::AddRemove, Way::Mouse);
    ASSERT_NE(submenu, nullptr);
    Click(CentreOf(RowRect(submenu, AddRemoveRow(L"Target"))), MouseButton::Right);
    ASSERT_TRUE(MenuCloses(program));
    EXPECT_TRUE(FileBecomes(SettingsText(true, {"Nowhere", "Target"})));
    EXPECT_TRUE(BecomesTopmost(target));
}

TEST_F(MenuCommandsTest, MinSizeRowPinsItsWindowAtItsSize) {
    const TrayRecorder recorder;
    Actor actor;
    const HWND alpha = actor.Create({.title = L"Alpha", .width = 300, .height = 200});
    const HWND beta = actor.Create({.title = L"Beta", .width = 410, .height = 310});
    for (const Way way : Ways) {
        ASSERT_TRUE(WriteSettings(SettingsText(true, {"Nowhere"})));
        const Program program = StartedProgram();
        const std::size_t seen = Balloons(recorder).size();
        ASSERT_TRUE(OpenAndChoose(program, MinSizeRow(L"Beta"), way)) << NameOf(way);
        EXPECT_EQ(WaitForBalloon(recorder, seen).info, L"Minimum size set to 410 x 310.");
        EXPECT_EQ(WaitForBalloon(recorder, seen).infoTitle, L"Morvane");
        EXPECT_EQ(WaitForBalloon(recorder, seen).infoFlags, static_cast<DWORD>(NIIF_INFO));
        EXPECT_EQ(ReadSettings(), SettingsText(true, {"Nowhere", "Beta\t410\t310"})) << NameOf(way);
        EXPECT_TRUE(BecomesTopmost(beta)) << NameOf(way);
        EXPECT_FALSE(IsTopmost(alpha)) << NameOf(way);
        actor.Place(beta, 150, 120, 200, 150);
        EXPECT_TRUE(BecomesSized(beta, 410, 310)) << NameOf(way);
        EXPECT_EQ(program.ExitByCommand(), 0U) << NameOf(way);
    }
}

TEST_F(MenuCommandsTest, MinSizeRowOfAPinnedWindowMeasuresItAgain) {
    const TrayRecorder recorder;
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Target\t300\t200"})));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target", .width = 640, .height = 480});
    const Program program = StartedProgram();
    ASSERT_TRUE(OpenAndChoose(program, MinSizeRow(L"Target"), Way::Mouse));
    EXPECT_EQ(WaitForBalloon(recorder).info, L"Minimum size set to 640 x 480.");
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Target\t640\t480"}));
    actor.Place(target, 50, 50, 320, 240);
    EXPECT_TRUE(BecomesSized(target, 640, 480));
}

TEST_F(MenuCommandsTest, ActiveWindowRowPinsTheWindowInFront) {
    const TrayRecorder recorder;
    Actor actor;
    static_cast<void>(actor.Create({.title = L"Alpha", .x = 700, .width = 300, .height = 200}));
    const HWND beta = actor.Create({.title = L"Beta", .width = 410, .height = 310});
    static_cast<void>(actor.Create({.title = L"Gamma", .x = 700, .width = 300, .height = 200}));
    for (const Way way : Ways) {
        ASSERT_TRUE(WriteSettings(SettingsText(true, {"Nowhere"})));
        const Program program = StartedProgram();
        ASSERT_TRUE(actor.BringToForeground(beta)) << NameOf(way);
        const std::size_t seen = Balloons(recorder).size();
        ASSERT_TRUE(OpenAndChoose(program, ActiveWindowRow(), way)) << NameOf(way);
        EXPECT_EQ(WaitForBalloon(recorder, seen).info, L"Minimum size set to 410 x 310.");
        EXPECT_EQ(ReadSettings(), SettingsText(true, {"Nowhere", "Beta\t410\t310"})) << NameOf(way);
        EXPECT_TRUE(BecomesTopmost(beta)) << NameOf(way);
        actor.Place(beta, 150, 120, 200, 150);
        EXPECT_TRUE(BecomesSized(beta, 410, 310)) << NameOf(way);
        EXPECT_EQ(program.ExitByCommand(), 0U) << NameOf(way);
    }
}

// Whether or not the click deactivates the window before the menu opens, the user means that
// window.
TEST_F(MenuCommandsTest, ActiveWindowSurvivesTheClickOnTheIcon) {
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const HWND target = actor.Create({.title = L"Target", .width = 410, .height = 310});
    const Program program = StartedProgram();
    ASSERT_TRUE(actor.BringToForeground(target));
    // Seen in front before the click, which may put the taskbar there.
    ASSERT_TRUE(sentinel.WaitForTimedPass());
    ASSERT_NE(OpenMenuByIcon(program), nullptr);
    ASSERT_TRUE(Choose(program, ActiveWindowRow(), Way::Mouse));
    EXPECT_TRUE(FileBecomes(SettingsText(true, {"Sentinel", "Target\t410\t310"})));
}

// Whatever leads to the icon is in front both when the timer fires and when the menu opens.
TEST_F(MenuCommandsTest, ActiveWindowSurvivesTheTaskBarsAndTheFlyoutOfTheTray) {
    // Keeps the program's calls from the actor's taskbars.
    const TrayRecorder recorder;
    Actor actor;
    const Sentinel sentinel(actor);
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    const Program program = StartedProgram();
    std::string title = "Document A";
    for (const wchar_t* const className :
         {L"Shell_TrayWnd", L"Shell_SecondaryTrayWnd", L"NotifyIconOverflowWindow",
          L"TopLevelWindowForOverflowXamlIsland"}) {
        SCOPED_TRACE(testing::PrintToString(className));
        ASSERT_TRUE(EditSettings("Sentinel\n"));
        const HWND surface = actor.Create({.className = className, .title = L"", .x = 600});
        const HWND document = actor.Create(
            {.title = std::wstring(title.begin(), title.end()), .width = 410, .height = 310});
        for (const HWND front : {document, surface}) {
            ASSERT_TRUE(actor.BringToForeground(front));
            ASSERT_TRUE(sentinel.WaitForTimedPass());
        }
        ASSERT_TRUE(OpenAndChoose(program, ActiveWindowRow(), Way::Mouse));
        EXPECT_TRUE(FileBecomes(SettingsText(true, {"Sentinel", title + "\t410\t310"})));
        actor.Destroy(document);
        ++title.back();
    }
}

TEST_F(MenuCommandsTest, OpenSettingsShowsTheFileInNotepad) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    const Program program = StartedProgram();
    for (const Way way : Ways) {
        ASSERT_TRUE(OpenAndChoose(program, Item::OpenSettings, way)) << NameOf(way);
        std::vector<HWND> editors;
        ASSERT_TRUE(WaitUntil([&editors] {
            editors = VisibleWindowsOfClass(L"Notepad");
            return !editors.empty() &&
                   WindowTitle(editors.front()).find(L"config.txt") != std::wstring::npos;
        })) << NameOf(way);
        const KernelHandle editor(
            OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, ProcessOf(editors.front())));
        ASSERT_NE(TerminateProcess(editor.get(), 0), FALSE);
        EXPECT_TRUE(WaitForObject(editor.get()));
        EXPECT_TRUE(WaitUntil([] { return VisibleWindowsOfClass(L"Notepad").empty(); }));
    }
}

// The timer alone could not have made so many passes in the time.
TEST_F(MenuCommandsTest, ApplyNowRunsAPassAtOnce) {
    constexpr std::size_t Rounds = 6;
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    for (const Way way : Ways) {
        ASSERT_TRUE(sentinel.WaitForTimedPass());
        const std::size_t before = sentinel.PassTicks().size();
        const ULONGLONG start = GetTickCount64();
        for (std::size_t round = 0; round < Rounds; ++round) {
            ASSERT_TRUE(OpenAndChoose(program, Item::ApplyNow, way)) << NameOf(way);
        }
        std::size_t passes = 0;
        EXPECT_TRUE(WaitUntil([&] {
            passes = sentinel.PassTicks().size() - before;
            return passes > (GetTickCount64() - start) / 500 + 2;
        })) << NameOf(way)
            << ": " << passes;
    }
}

TEST_F(MenuCommandsTest, StartWithWindowsMakesAndRemovesTheShortcut) {
    const TrayRecorder recorder;
    const Program program = StartedProgram();
    for (const Way way : Ways) {
        std::size_t seen = Balloons(recorder).size();
        ASSERT_TRUE(OpenAndChoose(program, Item::StartWithWindows, way)) << NameOf(way);
        EXPECT_EQ(WaitForBalloon(recorder, seen).info,
                  L"Morvane will start when you sign in to Windows.");
        EXPECT_TRUE(PathExists(StartupShortcut())) << NameOf(way);
        ++seen;
        ASSERT_TRUE(OpenAndChoose(program, Item::StartWithWindows, way)) << NameOf(way);
        EXPECT_EQ(WaitForBalloon(recorder, seen).info,
                  L"Morvane will no longer start with Windows.");
        EXPECT_FALSE(PathExists(StartupShortcut())) << NameOf(way);
    }
}

TEST_F(MenuCommandsTest, AboutOpensTheDialog) {
    const Program program = StartedProgram();
    for (const Way way : Ways) {
        ASSERT_TRUE(OpenAndChoose(program, Item::About, way)) << NameOf(way);
        ASSERT_TRUE(WaitUntil([&] { return AboutDialog(program) != nullptr; })) << NameOf(way);
        PostMessageW(AboutDialog(program), WM_CLOSE, 0, 0);
        EXPECT_TRUE(AboutCloses(program)) << NameOf(way);
    }
}

TEST_F(MenuCommandsTest, ExitReleasesTheWindowsAndEndsTheProcess) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    for (const Way way : Ways) {
        const Program program = StartedProgram();
        ASSERT_TRUE(BecomesTopmost(target)) << NameOf(way);
        ASSERT_TRUE(OpenAndChoose(program, Item::Exit, way)) << NameOf(way);
        EXPECT_EQ(program.WaitForExit(), 0U) << NameOf(way);
        EXPECT_FALSE(IsTopmost(target)) << NameOf(way);
        EXPECT_EQ(ReadSettings(), "Target\n") << NameOf(way);
    }
}

}  // namespace
}  // namespace morvane::test
