// The menu while it is actually open: how it opens, what it shows, and how it closes.

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "base/gui_owners.h"
#include "desktop/menu_fixture.h"
#include "desktop/menu_reader.h"
#include "pin/candidates.h"
#include "pin/engine.h"
#include "support/test_environment.h"
#include "support/user_input.h"
#include "support/window_state.h"
#include "ui/active_window.h"
#include "ui/menu_rows.h"
#include "ui/tray_menu.h"

namespace morvane::test {
namespace {

using Lines = std::vector<std::wstring>;

class OpenMenuTest : public MenuTest {
protected:
    void SetUp() override {
        MenuTest::SetUp();
        if (!IsSkipped()) {
            MovePointer({300, 600});
        }
    }

    [[nodiscard]] bool MeasuresRow(ULONG_PTR itemData) {
        MEASUREITEMSTRUCT measure{};
        measure.CtlType = ODT_MENU;
        measure.itemData = itemData;
        return MeasurePinItem(Control().Get(), measure);
    }

    // The menu shown by the open menu window at this depth, topmost first.
    [[nodiscard]] static HMENU OpenMenu(std::size_t depth) {
        const std::vector<HWND> windows = OpenMenuWindows();
        return depth < windows.size() ? MenuOfWindow(windows[depth]) : nullptr;
    }

    // The last step makes the menu close.
    void OpenAndChoose(const std::vector<ControlStandIn::Step>& steps) {
        Control().Run([this] { ShowTrayMenu(Control().Get()); }, steps,
                      InTheEnd([] { EndMenu(); }));
    }

    // Steps that open the first or the second submenu.
    [[nodiscard]] std::vector<ControlStandIn::Step> StepsToSubmenu(int downs) {
        std::vector<ControlStandIn::Step> steps;
        steps.emplace_back([] { return MenusOpen(1); });
        steps.emplace_back([this, downs] {
            for (int down = 0; down < downs; ++down) {
                Press(VK_DOWN);
            }
            Press(VK_RIGHT);
            return true;
        });
        steps.emplace_back([] { return MenusOpen(2); });
        return steps;
    }
};

TEST_F(OpenMenuTest, LowerLeftCornerOfTheMenuIsAtTheCursor) {
    RECT frame{};
    Open({[] { return MenusOpen(1); },
          [&frame] {
              frame = WindowRect(OpenMenuWindows().front());
              return true;
          }});
    EXPECT_EQ(frame.left, 300);
    EXPECT_EQ(frame.bottom, 600);
    EXPECT_TRUE(MenusOpen(0));
}

TEST_F(OpenMenuTest, ControlWindowIsInTheForegroundWhileTheMenuIsOpen) {
    const HWND window = Window(L"Alpha");
    ASSERT_TRUE(Other().BringToForeground(window));
    Open(
        {[] { return MenusOpen(1); }, [this] { return GetForegroundWindow() == Control().Get(); }});
}

TEST_F(OpenMenuTest, DismissedMenuSendsAnEmptyMessageAndNoCommand) {
    Control().Forget();
    Open({[] { return MenusOpen(1); }});
    EXPECT_EQ(Control().Count(WM_ENTERMENULOOP), 1U);
    EXPECT_EQ(Control().Count(WM_EXITMENULOOP), 1U);
    EXPECT_EQ(Control().Count(WM_COMMAND), 0U);
    ASSERT_FALSE(Control().Messages().empty());
    EXPECT_EQ(Control().Messages().back().id, UINT{WM_NULL});
}

TEST_F(OpenMenuTest, ChosenItemArrivesAsACommandBeforeTheEmptyMessage) {
    Control().Forget();
    OpenAndChoose({[] { return MenusOpen(1); },
                   [this] {
                       Press(VK_UP);
                       Press(VK_RETURN);
                       return true;
                   }});
    UINT command = 0;
    for (const ControlStandIn::Message& message : Control().Messages()) {
        command = message.id == WM_COMMAND ? LOWORD(message.wParam) : command;
    }
    EXPECT_EQ(command, 1004U);
    EXPECT_EQ(Control().Count(WM_COMMAND), 1U);
    EXPECT_EQ(Control().Messages().back().id, UINT{WM_NULL});
}

TEST_F(OpenMenuTest, ChosenRowArrivesWithItsIdentifier) {
    static_cast<void>(Window(L"Alpha"));
    static_cast<void>(Window(L"Beta"));
    Control().Forget();
    std::vector<ControlStandIn::Step> steps = StepsToSubmenu(2);
    steps.emplace_back([this] {
        Press(VK_DOWN);
        Press(VK_RETURN);
        return true;
    });
    OpenAndChoose(steps);
    std::vector<WPARAM> commands;
    for (const ControlStandIn::Message& message : Control().Messages()) {
        if (message.id == WM_COMMAND) {
            commands.push_back(message.wParam);
        }
    }
    EXPECT_EQ(commands, std::vector<WPARAM>({2501}));
}

TEST_F(OpenMenuTest, RowsOfTheOpenMenuCarryTheirTexts) {
    const HWND window = Sized(L"Alpha", 300, 200);
    static_cast<void>(Sized(L"Beta & Gamma", 310, 210));
    ASSERT_TRUE(WriteSettings("beta\t100\t100\n"));
    ASSERT_TRUE(Other().BringToForeground(window));
    for (const int submenu : {2, 3}) {
        Lines main;
        Lines rows;
        std::vector<ControlStandIn::Step> steps = StepsToSubmenu(submenu);
        steps.emplace_back([&main, &rows] {
            rows = DescribedMenu(OpenMenu(0));
            main = DescribedMenu(OpenMenu(1));
            return true;
        });
        Open(steps);
        ASSERT_EQ(main.size(), 12U);
        EXPECT_EQ(main[2], L"> Add / Remove");
        const Lines expected =
            submenu == 2 ? Lines({L"2500 row 1 free: Alpha", L"2501 row 2 pinned: Beta & Gamma"})
                         : Lines({L"1006 row 3 free: Active: Alpha (300 x 200)", L"-",
                                  L"3000 row 4 free: Alpha (300 x 200)",
                                  L"3001 row 5 sized: Beta & Gamma (310 x 210)"});
        EXPECT_EQ(rows, expected);
    }
}

TEST_F(OpenMenuTest, OpeningRereadsTheSettingsAndTheWindows) {
    static_cast<void>(Window(L"Alpha"));
    Lines rows;
    const auto read = [&rows] {
        const HMENU menu = OpenMenu(0);
        rows = DescribedMenu(GetSubMenu(menu, 2));
        rows.push_back(DescribedItem(menu, 0));
        return true;
    };
    ASSERT_TRUE(WriteSettings("@pinning=0\nalpha\n"));
    Open({[] { return MenusOpen(1); }, read});
    EXPECT_EQ(rows, Lines({L"2500 row 1 pinned: Alpha", L"1002: Always on top"}));
    static_cast<void>(Window(L"Beta"));
    ASSERT_TRUE(WriteSettings("@pinning=1\nbeta\n"));
    Open({[] { return MenusOpen(1); }, read});
    EXPECT_EQ(rows, Lines({L"2500 row 1 free: Alpha", L"2501 row 2 pinned: Beta",
                           L"1002 checked: Always on top"}));
}

TEST_F(OpenMenuTest, NeitherRowsNorMenusOutliveTheOpening) {
    const HWND window = Window(L"Alpha");
    ASSERT_TRUE(Other().BringToForeground(window));
    std::vector<HMENU> menus;
    bool measured = false;
    Open({[] { return MenusOpen(1); },
          [this, &menus, &measured] {
              menus = {OpenMenu(0)};
              menus.push_back(GetSubMenu(menus[0], 2));
              menus.push_back(GetSubMenu(menus[0], 3));
              measured = MeasuresRow(1) && MeasuresRow(2) && MeasuresRow(3) && !MeasuresRow(4);
              return true;
          }});
    EXPECT_TRUE(measured);
    EXPECT_FALSE(MeasuresRow(1));
    ASSERT_EQ(menus.size(), 3U);
    for (const HMENU menu : menus) {
        EXPECT_NE(menu, nullptr);
        EXPECT_EQ(IsMenu(menu), FALSE);
    }
    EXPECT_EQ(CandidateList().size(), 1U) << "the list is kept";
    EXPECT_EQ(ActiveWindow(), window);
}

TEST_F(OpenMenuTest, RowsLeftBehindAreForgottenBeforeTheMenuIsBuilt) {
    const HWND window = Window(L"Alpha");
    ASSERT_TRUE(Other().BringToForeground(window));
    const Menu stale(CreatePopupMenu());
    AppendPinItem(stale.get(), 1, L"left behind", PinState::Pinned);
    std::wstring row;
    Open({[] { return MenusOpen(1); },
          [&row] {
              row = DescribedItem(GetSubMenu(OpenMenu(0), 2), 0);
              return true;
          }});
    EXPECT_EQ(row, L"2500 row 1 free: Alpha");
}

TEST_F(OpenMenuTest, SecondCallWhileTheMenuIsOpenChangesNothing) {
    const HWND window = Window(L"Alpha");
    ASSERT_TRUE(Other().BringToForeground(window));
    Lines before;
    Lines after;
    HMENU menuBefore = nullptr;
    HMENU menuAfter = nullptr;
    Control().Forget();
    Open({[] { return MenusOpen(1); },
          [&] {
              menuBefore = OpenMenu(0);
              before = DescribedMenu(GetSubMenu(menuBefore, 3));
              EXPECT_TRUE(WriteSettings("alpha\n"));
              ShowTrayMenu(Control().Get());
              menuAfter = OpenMenu(0);
              after = DescribedMenu(GetSubMenu(menuAfter, 3));
              return true;
          },
          [] { return MenusOpen(1); }});
    EXPECT_NE(menuBefore, nullptr);
    EXPECT_EQ(menuBefore, menuAfter);
    EXPECT_EQ(before.size(), 3U);
    EXPECT_EQ(before, after);
    EXPECT_TRUE(Engine().pinList.entries.empty()) << "the settings were not read again";
    EXPECT_EQ(Control().Count(WM_ENTERMENULOOP), 1U);
    Open({[] { return MenusOpen(1); }});
    EXPECT_EQ(Control().Count(WM_ENTERMENULOOP), 2U) << "the next opening succeeds";
}

TEST_F(OpenMenuTest, ActiveWindowStaysWhileAnotherIsNoted) {
    const HWND first = Window(L"First");
    const HWND second = Window(L"Second");
    ASSERT_TRUE(Other().BringToForeground(first));
    Open({[] { return MenusOpen(1); },
          [&] {
              SetForegroundWindow(second);
              return GetForegroundWindow() == second;
          },
          [&] {
              NoteForegroundWindow();
              return ActiveWindow() == first;
          }});
    EXPECT_EQ(ActiveWindow(), first);
}

}  // namespace
}  // namespace morvane::test
