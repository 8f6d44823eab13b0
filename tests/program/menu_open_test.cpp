// Opening and dismissing the tray menu.

#include <algorithm>

#include "program/menu_scene.h"
#include "support/tray.h"

namespace morvane::test {
namespace {

using MenuOpenTest = ProgramTest;

constexpr MouseButton Buttons[] = {MouseButton::Left, MouseButton::Right};
constexpr POINT Elsewhere{300, 200};

const char* NameOf(MouseButton button) {
    return button == MouseButton::Left ? "left" : "right";
}

bool IsInside(const RECT& inner, const RECT& outer) {
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

TEST_F(MenuOpenTest, EitherButtonOpensTheMenuBesideTheIcon) {
    const Program program = StartedProgram();
    const RECT screen{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    const POINT icon = WaitForTrayIcon(program.ControlWindow());
    SIZE sizes[2] = {};
    for (const MouseButton button : Buttons) {
        const HWND menu = OpenMenuByIcon(program, button);
        ASSERT_NE(menu, nullptr) << NameOf(button);
        const RECT rect = WindowRect(menu);
        EXPECT_TRUE(IsInside(rect, screen)) << NameOf(button);
        EXPECT_LE(rect.left, icon.x) << NameOf(button);
        EXPECT_GE(rect.right, icon.x) << NameOf(button);
        // Above the pointer where there is room.
        EXPECT_NEAR(rect.bottom, std::max(icon.y, WindowSize(menu).cy), 1) << NameOf(button);
        sizes[button == MouseButton::Left ? 0 : 1] = WindowSize(menu);
        EXPECT_TRUE(DismissMenu(program)) << NameOf(button);
    }
    EXPECT_EQ(sizes[0].cx, sizes[1].cx);
    EXPECT_EQ(sizes[0].cy, sizes[1].cy);
}

TEST_F(MenuOpenTest, EscapeDismissesTheMenuAndLeavesNothingBehind) {
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    for (int round = 0; round < 3; ++round) {
        ASSERT_NE(OpenMenuByIcon(program), nullptr) << round;
        TapKey(VK_ESCAPE);
        ASSERT_TRUE(MenuCloses(program)) << round;
    }
    EXPECT_TRUE(sentinel.WaitForTimedPass());
    EXPECT_TRUE(MenuWindows(program).empty());
    EXPECT_EQ(ReadSettings(), "Sentinel\n");
}

TEST_F(MenuOpenTest, EscapeInASubmenuGoesBackToTheMenu) {
    Actor actor;
    static_cast<void>(actor.Create({.title = L"Target"}));
    const Program program = StartedProgram();
    const HWND menu = OpenMenu(program);
    ASSERT_NE(menu, nullptr);
    ASSERT_NE(OpenSubmenu(program, Item::AddRemove, Way::Keyboard), nullptr);
    TapKey(VK_ESCAPE);
    EXPECT_TRUE(WaitUntil([&] { return MenuWindows(program).size() == 1; }));
    EXPECT_EQ(MenuWindows(program), std::vector<HWND>{menu});
    TapKey(VK_ESCAPE);
    EXPECT_TRUE(MenuCloses(program));
}

TEST_F(MenuOpenTest, ClickElsewhereDismissesTheMenu) {
    Actor actor;
    static_cast<void>(actor.Create({.title = L"Target", .x = 100, .y = 100}));
    const Program program = StartedProgram();
    const std::optional<std::string> before = ReadSettings();
    for (const MouseButton button : Buttons) {
        ASSERT_NE(OpenMenuByIcon(program), nullptr) << NameOf(button);
        Click(Elsewhere, button);
        EXPECT_TRUE(MenuCloses(program)) << NameOf(button);
        // By mouse again: a posted message would overtake the rest of the click before.
        ASSERT_NE(OpenMenuByIcon(program), nullptr) << NameOf(button);
        ASSERT_NE(OpenSubmenu(program, Item::AddRemove, Way::Mouse), nullptr) << NameOf(button);
        Click(Elsewhere, button);
        EXPECT_TRUE(MenuCloses(program)) << NameOf(button);
    }
    EXPECT_EQ(ReadSettings(), before);
}

TEST_F(MenuOpenTest, SecondClickOnTheIconDoesNoHarm) {
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Sentinel"})));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    const POINT icon = WaitForTrayIcon(program.ControlWindow());
    for (const MouseButton button : Buttons) {
        ASSERT_NE(OpenMenuByIcon(program), nullptr) << NameOf(button);
        Click(icon, button);
        EXPECT_TRUE(sentinel.WaitForTimedPass()) << NameOf(button);
        EXPECT_LE(MenuWindows(program).size(), 1U) << NameOf(button);
        EXPECT_TRUE(DismissMenu(program)) << NameOf(button);
    }
    ASSERT_TRUE(OpenAndChoose(program, Item::AlwaysOnTop, Way::Mouse));
    EXPECT_TRUE(FileBecomes(SettingsText(false, {"Sentinel"})));
}

// A second menu would take the row texts away from the first.
TEST_F(MenuOpenTest, ClickReportedWhileTheMenuIsOpenChangesNothing) {
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Sentinel"})));
    Actor actor;
    const Sentinel sentinel(actor);
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    const HWND menu = OpenMenu(program);
    ASSERT_NE(menu, nullptr);
    for (const LPARAM button : {WM_LBUTTONUP, WM_RBUTTONUP}) {
        EXPECT_EQ(Answer(program.ControlWindow(), TrayMessage, 1, button), 0);
    }
    EXPECT_TRUE(sentinel.WaitForPass(program));
    ASSERT_EQ(MenuWindows(program), std::vector<HWND>{menu});
    ASSERT_TRUE(Choose(program, AddRemoveRow(L"Target"), Way::Mouse));
    EXPECT_TRUE(BecomesTopmost(target));
    EXPECT_TRUE(FileBecomes(SettingsText(true, {"Sentinel", "Target"})));
}

POINT ScreenCentre() {
    return {GetSystemMetrics(SM_CXSCREEN) / 2, GetSystemMetrics(SM_CYSCREEN) / 2};
}

bool PointerIsInTheCentre() {
    POINT pointer{};
    const POINT centre = ScreenCentre();
    return GetCursorPos(&pointer) != FALSE && pointer.x == centre.x && pointer.y == centre.y;
}

TEST_F(MenuOpenTest, MenuTimerOpensTheMenuOnceInTheMiddleOfTheScreen) {
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    MovePointer(Elsewhere);
    ASSERT_NE(PostMessageW(program.ControlWindow(), WM_TIMER, 3, 0), FALSE);
    ASSERT_TRUE(WaitUntil([&] { return MenuWindows(program).size() == 1; }));
    EXPECT_TRUE(PointerIsInTheCentre());
    const RECT rect = WindowRect(MenuWindows(program).front());
    EXPECT_EQ(rect.left, ScreenCentre().x);
    EXPECT_EQ(rect.bottom, ScreenCentre().y);
    EXPECT_TRUE(DismissMenu(program));
    EXPECT_TRUE(sentinel.WaitForPass(program));
    EXPECT_TRUE(MenuWindows(program).empty());
}

TEST_F(MenuOpenTest, MenuTimerOpensNoSecondMenu) {
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Sentinel"})));
    Actor actor;
    const Sentinel sentinel(actor);
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    const HWND menu = OpenMenu(program);
    ASSERT_NE(menu, nullptr);
    ASSERT_NE(PostMessageW(program.ControlWindow(), WM_TIMER, 3, 0), FALSE);
    EXPECT_TRUE(WaitUntil(PointerIsInTheCentre));
    EXPECT_TRUE(sentinel.WaitForPass(program));
    ASSERT_EQ(MenuWindows(program), std::vector<HWND>{menu});
    ASSERT_TRUE(Choose(program, AddRemoveRow(L"Target"), Way::Mouse));
    EXPECT_TRUE(BecomesTopmost(target));
    EXPECT_TRUE(FileBecomes(SettingsText(true, {"Sentinel", "Target"})));
    EXPECT_TRUE(MenuWindows(program).empty());
}

}  // namespace
}  // namespace morvane::test
