// The open menus and the About dialog are raised above the windows that a pass has raised.

#include <chrono>
#include <gtest/gtest.h>
#include <iostream>
#include <string>
#include <vector>

#include "desktop/about_fixture.h"
#include "desktop/menu_fixture.h"
#include "desktop/menu_reader.h"
#include "pin/enforcement.h"
#include "support/test_environment.h"
#include "support/user_input.h"
#include "support/wait.h"
#include "support/window_owner.h"
#include "support/window_state.h"
#include "ui/about.h"
#include "ui/tray_menu.h"

namespace morvane::test {
namespace {

constexpr const char* RaiseRequest = "topmost 0,0 0x0 0213";

// A pinned window that covers the whole screen.
HWND Cover(Actor& actor) {
    WriteSettings("cover\n");
    return actor.Create(
        {.title = L"Cover", .style = WS_POPUP, .x = 0, .y = 0, .width = 1280, .height = 800});
}

// Runs a pass, which puts the cover above the windows, highest first. Raises these once, judges the
// requests, and looks at the order of the desktop. A busy desktop sometimes moves the cover up
// late: the raise is then repeated twice at most.
void ExpectRaised(const char* what, void (*raise)(), const std::vector<HWND>& windows,
                  const std::vector<HWND>& below) {
    constexpr int MostLooks = 3;
    constexpr std::chrono::milliseconds LookTime{1'000};
    ApplyAll();
    std::vector<Request> expected;
    for (const HWND window : windows) {
        EXPECT_TRUE(IsAbove(below.front(), window)) << what << ": covered by the pass";
        expected.insert(expected.begin(), {window, RaiseRequest});
    }
    std::vector<HWND> order = windows;
    order.insert(order.end(), below.begin(), below.end());
    const auto isInOrder = [&order] { return InDesktopOrder(order) == order; };
    EXPECT_EQ(RequestsOf(raise), expected) << what;
    int looks = 1;
    while (!WaitUntil(isInOrder, LookTime) && looks < MostLooks) {
        raise();
        ++looks;
    }
    EXPECT_EQ(InDesktopOrder(order), order) << what;
    std::cout << "measured: " << what << " raised, looks at the desktop: " << looks << "\n";
}

using RaiseMenuTest = MenuTest;

TEST_F(RaiseMenuTest, MenuAndSubmenuKeepTheirOrderAboveAPinnedWindow) {
    const HWND cover = Cover(Other());
    const HWND plain = Window(L"Plain");
    const HWND higher =
        Other().Create({.title = L"Higher", .exStyle = WS_EX_TOPMOST, .x = 0, .y = 0});
    MovePointer({300, 600});
    const auto look = [&] {
        const std::vector<HWND> menus = OpenMenuWindows();
        const RECT before = WindowRect(menus[0]);
        const HWND foreground = GetForegroundWindow();
        for (const HWND window : {cover, plain, higher}) {
            Other().ForgetRecords(window);
        }
        ExpectRaised("menu and submenu", RaiseOpenMenu, menus, {cover, higher, plain});
        EXPECT_EQ(GetForegroundWindow(), foreground);
        const RECT after = WindowRect(menus[0]);
        EXPECT_NE(EqualRect(&before, &after), FALSE);
        RaiseOpenMenu();
        EXPECT_EQ(OpenMenuWindows(), menus) << "again";
    };
    OpenAndLook(look, ToAddRemove(), 2);
    EXPECT_EQ(Asked(cover), std::vector<std::string>({TopmostRequest}));
    EXPECT_TRUE(Asked(plain).empty());
    EXPECT_TRUE(Asked(higher).empty());
}

TEST_F(RaiseMenuTest, WithoutAnOpenMenuOfOursNothingIsTouched) {
    // A hidden window of this process.
    const auto ownWindow = [](const wchar_t* className) {
        return WindowOwner(CreateWindowExW(0, className, L"", WS_POPUP, 10, 10, 50, 50, nullptr,
                                           nullptr, GetModuleHandleW(nullptr), nullptr));
    };
    const HWND foreignMenu = Other().Create({.className = L"#32768", .style = WS_POPUP});
    ASSERT_EQ(WindowClass(foreignMenu), L"#32768");
    const WindowOwner hiddenMenu = ownWindow(L"#32768");
    const WindowOwner noMenu = ownWindow(L"STATIC");
    ShowWindow(noMenu.get(), SW_SHOWNA);
    EXPECT_EQ(RequestsOf(RaiseOpenMenu), std::vector<Request>()) << "before any opening";
    OpenAndLook();
    EXPECT_EQ(RequestsOf(RaiseOpenMenu), std::vector<Request>()) << "after an opening";
}

using RaiseAboutTest = AboutDialogTest;

TEST_F(RaiseAboutTest, DialogIsAboveAPinnedWindow) {
    const HWND cover = Cover(Other());
    EXPECT_EQ(RequestsOf(RaiseAboutDialog), std::vector<Request>()) << "before it is open";
    OpenAndLook([&](HWND dialog) {
        const RECT before = WindowRect(dialog);
        Other().ForgetRecords(cover);
        ExpectRaised("About", RaiseAboutDialog, {dialog}, {cover});
        const RECT after = WindowRect(dialog);
        EXPECT_NE(EqualRect(&before, &after), FALSE);
    });
    EXPECT_EQ(Asked(cover), std::vector<std::string>({TopmostRequest}));
}

TEST_F(RaiseAboutTest, SystemMenuOfTheDialogIsAboveAPinnedWindow) {
    const HWND cover = Cover(Other());
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
                  Other().ForgetRecords(cover);
                  ExpectRaised("system menu", RaiseOpenMenu, OpenMenuWindows(), {cover});
                  EndMenu();
                  return true;
              },
              [] { return MenusOpen(0); }});
        EXPECT_EQ(Asked(cover), std::vector<std::string>({TopmostRequest})) << command;
    }
}

}  // namespace
}  // namespace morvane::test
