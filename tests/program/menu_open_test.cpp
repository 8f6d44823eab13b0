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
    for (const MouseButton button : Buttons) {
        SCOPED_TRACE(NameOf(button));
        const HWND menu = OpenMenuByIcon(program, button);
        ASSERT_NE(menu, nullptr);
        const RECT rect = WindowRect(menu);
        EXPECT_TRUE(IsInside(rect, screen));
        EXPECT_LE(rect.left, icon.x);
        EXPECT_GE(rect.right, icon.x);
        // Above the pointer where there is room.
        EXPECT_NEAR(rect.bottom, std::max(icon.y, WindowSize(menu).cy), 1);
        EXPECT_TRUE(DismissMenu(program));
    }
}

TEST_F(MenuOpenTest, HoveringAndPressingTheIconOpenNothing) {
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\n");
    const POINT icon = WaitForTrayIcon(program.ControlWindow());
    const auto nothingOpens = [&] {
        return sentinel.WaitForTimedPass() && MenuWindows(program).empty();
    };
    MovePointer({icon.x - 2, icon.y});
    MovePointer(icon);
    EXPECT_TRUE(nothingOpens());
    for (const MouseButton button : Buttons) {
        SCOPED_TRACE(NameOf(button));
        MovePointer(icon);
        PressButton(button);
        EXPECT_TRUE(nothingOpens()) << "pressed";
        MovePointer(Elsewhere);
        ReleaseButton(button);
        EXPECT_TRUE(nothingOpens()) << "dragged off the icon";
    }
}

TEST_F(MenuOpenTest, EscapeLeavesTheSubmenuAndThenTheMenu) {
    static_cast<void>(Window(L"Target"));
    const Program program = StartedProgram("Target\n");
    const HWND menu = OpenMenu(program);
    ASSERT_NE(menu, nullptr);
    ASSERT_NE(OpenSubmenu(program, Item::AddRemove, Way::Keyboard), nullptr);
    TapKey(VK_ESCAPE);
    EXPECT_TRUE(WaitUntil([&] { return MenuWindows(program) == std::vector<HWND>{menu}; }));
    TapKey(VK_ESCAPE);
    EXPECT_TRUE(MenuCloses(program));
    EXPECT_EQ(ReadSettings(), "Target\n");
}

TEST_F(MenuOpenTest, ClickElsewhereDismissesTheMenu) {
    static_cast<void>(Window(L"Target"));
    const Program program = StartedProgram("Target\n");
    for (const MouseButton button : Buttons) {
        SCOPED_TRACE(NameOf(button));
        ASSERT_NE(OpenMenuByIcon(program), nullptr);
        Click(Elsewhere, button);
        EXPECT_TRUE(MenuCloses(program));
        // By mouse again: a posted message would overtake the rest of the click before.
        ASSERT_NE(OpenMenuByIcon(program), nullptr);
        ASSERT_NE(OpenSubmenu(program, Item::AddRemove, Way::Mouse), nullptr);
        Click(Elsewhere, button);
        EXPECT_TRUE(MenuCloses(program));
    }
    EXPECT_EQ(ReadSettings(), "Target\n");
}

TEST_F(MenuOpenTest, SecondClickOnTheIconOpensNoSecondMenu) {
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\n");
    const POINT icon = WaitForTrayIcon(program.ControlWindow());
    for (const MouseButton button : Buttons) {
        SCOPED_TRACE(NameOf(button));
        ASSERT_NE(OpenMenuByIcon(program), nullptr);
        Click(icon, button);
        EXPECT_TRUE(sentinel.WaitForTimedPass());
        EXPECT_LE(MenuWindows(program).size(), 1U);
        EXPECT_TRUE(DismissMenu(program));
    }
    ASSERT_TRUE(OpenAndChoose(program, Item::AlwaysOnTop, Way::Mouse));
    EXPECT_TRUE(FileBecomes(SettingsText(false, "Sentinel\n")));
}

// A second menu would take the row texts away from the first.
TEST_F(MenuOpenTest, NothingOpensASecondMenu) {
    struct Case {
        const char* name;
        UINT message;
        WPARAM wParam;
        LPARAM lParam;
    };
    constexpr Case Cases[] = {
        {"left click", TrayMessage, 1, WM_LBUTTONUP},
        {"right click", TrayMessage, 1, WM_RBUTTONUP},
        {"menu timer", WM_TIMER, 3, 0},
    };
    const Sentinel sentinel(Other());
    const HWND target = Window(L"Target");
    for (const Case& item : Cases) {
        SCOPED_TRACE(item.name);
        Other().SetTopmost(target, false);
        const Program program = StartedProgram("Sentinel\n");
        const HWND menu = OpenMenu(program);
        ASSERT_NE(menu, nullptr);
        EXPECT_EQ(Answer(program.ControlWindow(), item.message, item.wParam, item.lParam), 0);
        EXPECT_TRUE(sentinel.WaitForPass(program));
        ASSERT_EQ(MenuWindows(program), std::vector<HWND>{menu});
        ASSERT_TRUE(Choose(program, AddRemoveRow(L"Target"), Way::Mouse));
        EXPECT_TRUE(BecomesTopmost(target));
        EXPECT_TRUE(FileBecomes(SettingsText(true, "Sentinel\nTarget\n")));
        EXPECT_TRUE(MenuWindows(program).empty());
    }
}

}  // namespace
}  // namespace morvane::test
