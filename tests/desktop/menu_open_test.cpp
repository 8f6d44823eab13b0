// The menu while it is actually open: how it opens, what it shows, and how it closes.

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

    // The menu shown by the open menu window at this depth, topmost first.
    [[nodiscard]] static HMENU OpenMenu(std::size_t depth) {
        const std::vector<HWND> windows = OpenMenuWindows();
        return depth < windows.size() ? MenuOfWindow(windows[depth]) : nullptr;
    }

    // Presses keys that make the menu close.
    void OpenAndChoose(const std::vector<WPARAM>& keys) {
        Control().Run([this] { ShowTrayMenu(Control().Get()); },
                      {[] { return MenusOpen(1); },
                       [this, &keys] {
                           Press(keys);
                           return true;
                       }},
                      InTheEnd([] { EndMenu(); }));
    }
};

TEST_F(OpenMenuTest, LowerLeftCornerOfTheMenuIsAtTheCursor) {
    OpenAndLook([] {
        const RECT frame = WindowRect(OpenMenuWindows().front());
        EXPECT_EQ(frame.left, 300);
        EXPECT_EQ(frame.bottom, 600);
    });
    EXPECT_TRUE(MenusOpen(0));
}

TEST_F(OpenMenuTest, ControlWindowIsInTheForegroundWhileTheMenuIsOpen) {
    ASSERT_TRUE(Other().BringToForeground(Window(L"Alpha")));
    Open(
        {[] { return MenusOpen(1); }, [this] { return GetForegroundWindow() == Control().Get(); }});
}

TEST_F(OpenMenuTest, ChoiceArrivesAsACommandBeforeTheEmptyMessage) {
    struct Case {
        const char* name;
        std::vector<WPARAM> keys;
        std::vector<WPARAM> commands;
    };
    const Case cases[] = {
        {"item", {VK_UP, VK_RETURN}, {1004}},
        {"row", {VK_DOWN, VK_DOWN, VK_RIGHT, VK_DOWN, VK_RETURN}, {2501}},
        {"nothing", {VK_ESCAPE}, {}},
    };
    static_cast<void>(Window(L"Alpha"));
    static_cast<void>(Window(L"Beta"));
    for (const Case& item : cases) {
        SCOPED_TRACE(item.name);
        Control().Forget();
        OpenAndChoose(item.keys);
        std::vector<WPARAM> commands;
        for (const ControlStandIn::Message& message : Control().Messages()) {
            if (message.id == WM_COMMAND) {
                commands.push_back(message.wParam);
            }
        }
        EXPECT_EQ(commands, item.commands);
        EXPECT_EQ(Control().Count(WM_ENTERMENULOOP), 1U);
        EXPECT_EQ(Control().Count(WM_EXITMENULOOP), 1U);
        EXPECT_EQ(Control().Messages().back().id, UINT{WM_NULL});
    }
}

TEST_F(OpenMenuTest, RowsOfTheOpenMenuCarryTheirTexts) {
    const HWND window = Sized(L"Alpha", 300, 200);
    static_cast<void>(Sized(L"Beta & Gamma", 310, 210));
    WriteSettings("beta\t100\t100\n");
    ASSERT_TRUE(Other().BringToForeground(window));
    const auto rowsBehind = [this](const std::vector<WPARAM>& keys) {
        // Forgotten before the menu is built: its rows are numbered from 1.
        const Menu stale(CreatePopupMenu());
        AppendPinItem(stale.get(), 1, L"left behind", PinState::Pinned);
        Lines rows;
        const auto read = [&rows] {
            rows = DescribedMenu(OpenMenu(0));
            EXPECT_EQ(DescribedMenu(OpenMenu(1)).size(), 12U);
        };
        OpenAndLook(read, keys, 2);
        return rows;
    };
    EXPECT_EQ(rowsBehind(ToAddRemove()),
              Lines({L"2500 row 1 free: Alpha", L"2501 row 2 pinned: Beta & Gamma"}));
    EXPECT_EQ(rowsBehind(ToMinSize()), Lines({L"1006 row 3 free: Active: Alpha (300 x 200)", L"-",
                                              L"3000 row 4 free: Alpha (300 x 200)",
                                              L"3001 row 5 sized: Beta & Gamma (310 x 210)"}));
}

TEST_F(OpenMenuTest, OpeningRereadsTheSettingsAndTheWindows) {
    const auto rowsWith = [this](const char* settings) {
        WriteSettings(settings);
        Lines rows;
        OpenAndLook([&rows] {
            rows = DescribedMenu(GetSubMenu(OpenMenu(0), 2));
            rows.push_back(DescribedItem(OpenMenu(0), 0));
        });
        return rows;
    };
    static_cast<void>(Window(L"Alpha"));
    EXPECT_EQ(rowsWith("@pinning=0\nalpha\n"),
              Lines({L"2500 row 1 pinned: Alpha", L"1002: Always on top"}));
    static_cast<void>(Window(L"Beta"));
    EXPECT_EQ(rowsWith("@pinning=1\nbeta\n"),
              Lines({L"2500 row 1 free: Alpha", L"2501 row 2 pinned: Beta",
                     L"1002 checked: Always on top"}));
}

TEST_F(OpenMenuTest, NeitherRowsNorMenusOutliveTheOpening) {
    const HWND window = Window(L"Alpha");
    ASSERT_TRUE(Other().BringToForeground(window));
    std::vector<HMENU> menus;
    OpenAndLook([this, &menus] {
        const HMENU menu = OpenMenu(0);
        menus = {menu, GetSubMenu(menu, 2), GetSubMenu(menu, 3)};
        EXPECT_TRUE(MeasuresRow(1) && MeasuresRow(2) && MeasuresRow(3) && !MeasuresRow(4));
    });
    EXPECT_FALSE(MeasuresRow(1));
    ASSERT_EQ(menus.size(), 3U);
    for (const HMENU menu : menus) {
        EXPECT_NE(menu, nullptr);
        EXPECT_EQ(IsMenu(menu), FALSE);
    }
    EXPECT_EQ(CandidateList().size(), 1U) << "the list is kept";
    EXPECT_EQ(ActiveWindow(), window);
}

TEST_F(OpenMenuTest, SecondCallWhileTheMenuIsOpenChangesNothing) {
    ASSERT_TRUE(Other().BringToForeground(Window(L"Alpha")));
    Control().Forget();
    OpenAndLook([this] {
        const HMENU menu = OpenMenu(0);
        const Lines before = DescribedMenu(GetSubMenu(menu, 3));
        EXPECT_EQ(before.size(), 3U);
        WriteSettings("alpha\n");
        ShowTrayMenu(Control().Get());
        EXPECT_TRUE(MenusOpen(1));
        EXPECT_EQ(OpenMenu(0), menu);
        EXPECT_EQ(DescribedMenu(GetSubMenu(menu, 3)), before);
    });
    EXPECT_TRUE(Engine().pinList.entries.empty()) << "the settings were not read again";
    EXPECT_EQ(Control().Count(WM_ENTERMENULOOP), 1U);
    OpenAndLook();
    EXPECT_EQ(Control().Count(WM_ENTERMENULOOP), 2U) << "the next opening succeeds";
}

TEST_F(OpenMenuTest, ActiveWindowStaysWhileAnotherIsNoted) {
    const HWND first = Window(L"First");
    const HWND second = Window(L"Second");
    ASSERT_TRUE(Other().BringToForeground(first));
    Open({[] { return MenusOpen(1); },
          [second] {
              SetForegroundWindow(second);
              return true;
          },
          [second] { return GetForegroundWindow() == second; },
          [first] {
              NoteForegroundWindow();
              EXPECT_EQ(ActiveWindow(), first);
              return true;
          }});
    EXPECT_EQ(ActiveWindow(), first);
}

}  // namespace
}  // namespace morvane::test
