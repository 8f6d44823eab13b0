// An open menu stays above windows raised by a pass.

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "desktop/menu_fixture.h"
#include "desktop/menu_reader.h"
#include "pin/enforcement.h"
#include "support/test_environment.h"
#include "support/wait.h"
#include "support/window_owner.h"
#include "support/window_state.h"
#include "ui/tray_menu.h"

namespace morvane::test {
namespace {

class RaiseMenuTest : public MenuTest {
protected:
    // A pinned window that covers the whole screen.
    [[nodiscard]] HWND Cover() {
        EXPECT_TRUE(WriteSettings("cover\n"));
        return Other().Create(
            {.title = L"Cover", .style = WS_POPUP, .x = 0, .y = 0, .width = 1280, .height = 800});
    }

    // A hidden window of this process.
    [[nodiscard]] static WindowOwner OwnWindow(const wchar_t* className) {
        return WindowOwner(CreateWindowExW(0, className, L"", WS_POPUP, 10, 10, 50, 50, nullptr,
                                           nullptr, GetModuleHandleW(nullptr), nullptr));
    }
};

TEST_F(RaiseMenuTest, MenuAndSubmenuKeepTheirOrderAboveAPinnedWindow) {
    const HWND cover = Cover();
    const HWND plain = Window(L"Plain");
    const HWND higher =
        Other().Create({.title = L"Higher", .exStyle = WS_EX_TOPMOST, .x = 0, .y = 0});
    SetCursorPos(300, 600);
    RECT before{};
    RECT after{};
    HWND foreground = nullptr;
    Open({[] { return MenusOpen(1); },
          [this] {
              Press(VK_DOWN);
              Press(VK_DOWN);
              Press(VK_RIGHT);
              return true;
          },
          [] { return MenusOpen(2); },
          [&] {
              const std::vector<HWND> menus = OpenMenuWindows();
              before = WindowRect(menus[0]);
              Other().ForgetRecords(cover);
              Other().ForgetRecords(plain);
              Other().ForgetRecords(higher);
              ApplyAll();
              EXPECT_TRUE(IsAbove(cover, menus[0])) << "covered by the pass";
              EXPECT_TRUE(IsAbove(cover, menus[1])) << "covered by the pass";
              foreground = GetForegroundWindow();
              // More than once: a busy desktop sometimes raises the window late.
              EXPECT_TRUE(WaitUntil([&] {
                  RaiseOpenMenu();
                  return InDesktopOrder({menus[0], menus[1], cover, higher, plain}) ==
                         std::vector<HWND>({menus[0], menus[1], cover, higher, plain});
              }));
              EXPECT_EQ(GetForegroundWindow(), foreground);
              after = WindowRect(menus[0]);
              RaiseOpenMenu();
              EXPECT_EQ(OpenMenuWindows(), menus) << "again";
              return true;
          }});
    EXPECT_NE(EqualRect(&before, &after), FALSE);
    EXPECT_EQ(Asked(cover), std::vector<std::string>({TopmostRequest}));
    EXPECT_TRUE(Asked(plain).empty());
    EXPECT_TRUE(Asked(higher).empty());
}

TEST_F(RaiseMenuTest, WithoutAnOpenMenuOfOursNothingIsTouched) {
    const HWND cover = Cover();
    const HWND foreignMenu = Other().Create({.className = L"#32768", .style = WS_POPUP});
    ASSERT_EQ(WindowClass(foreignMenu), L"#32768");
    const WindowOwner hiddenMenu = OwnWindow(L"#32768");
    const WindowOwner noMenu = OwnWindow(L"STATIC");
    ShowWindow(noMenu.get(), SW_SHOWNA);
    const auto check = [&](const char* when) {
        ApplyAll();
        ASSERT_TRUE(WaitUntil([&] {
            return IsAbove(cover, noMenu.get()) && IsAbove(cover, foreignMenu);
        })) << when;
        Other().ForgetRecords(cover);
        const std::vector<HWND> order = TopLevelWindows();
        RaiseOpenMenu();
        EXPECT_EQ(TopLevelWindows(), order) << when;
        EXPECT_FALSE(IsTopmost(hiddenMenu.get())) << when;
        EXPECT_FALSE(IsTopmost(noMenu.get())) << when;
        EXPECT_FALSE(IsTopmost(foreignMenu)) << when;
        EXPECT_TRUE(Asked(cover).empty()) << when;
    };
    check("before any opening");
    Open({[] { return MenusOpen(1); }});
    check("after an opening");
}

}  // namespace
}  // namespace morvane::test
