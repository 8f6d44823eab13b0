// The menu when the system cannot create any more menus.

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "base/gui_owners.h"
#include "desktop/menu_fixture.h"
#include "desktop/menu_reader.h"
#include "pin/candidates.h"
#include "pin/engine.h"
#include "support/room.h"
#include "support/test_environment.h"
#include "ui/menu_build.h"
#include "ui/menu_rows.h"
#include "ui/tray_menu.h"

namespace morvane::test {
namespace {

TEST_F(MenuTest, MenusThatCannotBeCreatedAreLeftOut) {
    std::vector<Menu> room = FillMenuRoom();
    ASSERT_FALSE(room.empty());
    // The results are checked later: reporting a failure may need room.
    const bool anyBuilt = BuildTrayMenu() || BuildAddRemoveMenu() || BuildMinSizeMenu();
    Control().Forget();
    ShowTrayMenu(Control().Get());
    const std::size_t loops = Control().Count(WM_ENTERMENULOOP);
    std::vector<Lines> built;
    for (int free = 1; free <= 3; ++free) {
        room.pop_back();
        const Menu menu = BuildTrayMenu();
        built.push_back(DescribedMenu(menu.get()));
    }
    room.clear();
    EXPECT_FALSE(anyBuilt);
    EXPECT_EQ(loops, 0U) << "nothing is shown";
    for (int missing = 0; missing <= 2; ++missing) {
        Lines expected = MainLevel(Language::English);
        // The submenus are the third and the fourth line; the last one goes first.
        expected.erase(expected.begin() + 4 - missing, expected.begin() + 4);
        EXPECT_EQ(built.back(), expected) << missing;
        built.pop_back();
    }
    OpenAndLook();
}

TEST_F(MenuTest, MenuThatCannotBeCreatedStillForgetsRowsAndReadsTheSettings) {
    static_cast<void>(Window(L"Alpha"));
    LoadSettings("@pinning=0\nold\n");
    ASSERT_TRUE(CandidateList().empty() || CandidateList().front().title != L"Alpha");
    std::vector<Menu> room = FillMenuRoom();
    ASSERT_FALSE(room.empty());
    AppendPinItem(room.front().get(), 1, L"left behind", PinState::Pinned);
    const bool wasKnown = MeasuresRow(1);
    WriteSettings("new\n");
    Control().Forget();
    ShowTrayMenu(Control().Get());
    ControlStandIn::Pump();
    const std::size_t messages = Control().Count(WM_NULL);
    room.clear();
    EXPECT_TRUE(wasKnown);
    EXPECT_EQ(messages, 0U);
    EXPECT_FALSE(MeasuresRow(1));
    ASSERT_EQ(Engine().pinList.entries.size(), 1U);
    EXPECT_EQ(Engine().pinList.entries.front().pattern, L"new");
    EXPECT_TRUE(Engine().pinList.pinning);
    ASSERT_EQ(CandidateList().size(), 1U);
    EXPECT_EQ(CandidateList().front().title, L"Alpha");
    OpenAndLook();
    EXPECT_EQ(Control().Count(WM_NULL), 1U) << "sent after every menu that was shown";
}

}  // namespace
}  // namespace morvane::test
