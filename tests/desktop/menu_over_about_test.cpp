// Menus open together with the About dialog.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "desktop/about_fixture.h"
#include "desktop/menu_fixture.h"
#include "desktop/menu_reader.h"
#include "pin/enforcement.h"
#include "support/test_environment.h"
#include "support/wait.h"
#include "support/window_state.h"
#include "ui/tray_menu.h"

namespace morvane::test {
namespace {

TEST_F(AboutDialogTest, SystemMenuOfTheDialogComesAboveAPinnedWindow) {
    ASSERT_TRUE(WriteSettings("cover\n"));
    const HWND cover = Other().Create(
        {.title = L"Cover", .style = WS_POPUP, .x = 0, .y = 0, .width = 1280, .height = 800});
    for (const WPARAM command : {WPARAM{SC_KEYMENU}, WPARAM{SC_MOUSEMENU | HTSYSMENU}}) {
        Open({AboutHasFocus,
              [command] {
                  const RECT frame = WindowRect(AboutDialog());
                  const LPARAM where = command == SC_KEYMENU
                                           ? LPARAM{L' '}
                                           : MAKELPARAM(frame.left + 10, frame.top + 10);
                  PostMessageW(AboutDialog(), WM_SYSCOMMAND, command, where);
                  return true;
              },
              [] { return MenusOpen(1); },
              [&] {
                  const HWND menu = OpenMenuWindows().front();
                  Other().ForgetRecords(cover);
                  ApplyAll();
                  EXPECT_TRUE(IsAbove(cover, menu)) << "covered by the pass";
                  // More than once: a busy desktop sometimes raises the window late.
                  EXPECT_TRUE(WaitUntil([&] {
                      RaiseOpenMenu();
                      return IsAbove(menu, cover);
                  })) << command;
                  EndMenu();
                  return true;
              },
              [] { return MenusOpen(0); }});
        EXPECT_EQ(Asked(cover), std::vector<std::string>({TopmostRequest})) << command;
    }
}

}  // namespace
}  // namespace morvane::test
