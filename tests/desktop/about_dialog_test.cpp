// The About dialog in this process: its parts, how it opens and how it closes.

#include <gtest/gtest.h>
#include <utility>
#include <vector>

#include "base/gui_owners.h"
#include "desktop/about_fixture.h"
#include "support/import_patch.h"
#include "support/import_watch.h"
#include "support/languages.h"
#include "support/window_state.h"
#include "ui/about.h"

namespace morvane::test {
namespace {

DWORD StyleOf(HWND window) {
    return static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE));
}

DWORD ExStyleOf(HWND window) {
    return static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE));
}

TEST_F(AboutDialogTest, DialogIsACaptionedTopmostWindowOwnedByTheControlWindow) {
    OpenAndLook([this](HWND dialog) {
        // The system adds WS_CLIPSIBLINGS and WS_EX_WINDOWEDGE.
        EXPECT_EQ(StyleOf(dialog) & ~DWORD{WS_CLIPSIBLINGS}, 0x10C80000U);
        EXPECT_EQ(ExStyleOf(dialog) & ~DWORD{WS_EX_WINDOWEDGE}, 0x9U);
        EXPECT_EQ(WindowTitle(dialog), L"About Morvane");
        EXPECT_EQ(GetWindow(dialog, GW_OWNER), Control().Get());
        EXPECT_EQ(GetMenu(dialog), nullptr);
    });
}

TEST_F(AboutDialogTest, ClassHasNeitherStyleNorBackgroundNorIcon) {
    OpenAndLook([](HWND) {});
    WNDCLASSW info{};
    ASSERT_NE(GetClassInfoW(GetModuleHandleW(nullptr), L"MorvaneAboutDialog", &info), FALSE)
        << "it stays registered";
    EXPECT_EQ(info.style, 0U);
    EXPECT_EQ(info.cbClsExtra, 0);
    EXPECT_EQ(info.cbWndExtra, 0);
    EXPECT_EQ(info.hInstance, GetModuleHandleW(nullptr));
    EXPECT_EQ(info.hIcon, nullptr);
    EXPECT_EQ(info.hCursor, LoadCursorW(nullptr, IDC_ARROW));
    EXPECT_EQ(info.hbrBackground, nullptr);
    EXPECT_EQ(info.lpszMenuName, nullptr);
}

TEST_F(AboutDialogTest, ControlsAreAStaticTextAndADefaultButton) {
    OpenAndLook([](HWND dialog) {
        const HWND body = BodyOf(dialog);
        const HWND button = ButtonOf(dialog);
        ASSERT_TRUE(body != nullptr && button != nullptr);
        EXPECT_EQ(WindowClass(body), L"Static");
        EXPECT_EQ(WindowClass(button), L"Button");
        EXPECT_EQ(StyleOf(body), DWORD{WS_CHILD | WS_VISIBLE | SS_NOPREFIX});
        EXPECT_EQ(StyleOf(button), DWORD{WS_CHILD | WS_VISIBLE | BS_DEFPUSHBUTTON});
        EXPECT_EQ(WindowTitle(body), L"Morvane\n\nVersion: ?");
        EXPECT_EQ(WindowTitle(button), L"Close");
        EXPECT_EQ(GetWindow(body, GW_HWNDNEXT), button) << "and nothing else";
        EXPECT_EQ(GetWindow(button, GW_HWNDNEXT), nullptr);
        const WindowDc screen(nullptr);
        const int dpi = GetDeviceCaps(screen.get(), LOGPIXELSY);
        for (const HWND control : {body, button}) {
            auto* const font = reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
            LOGFONTW data{};
            ASSERT_NE(GetObjectW(font, sizeof(data), &data), 0);
            EXPECT_STREQ(data.lfFaceName, L"Segoe UI");
            EXPECT_EQ(data.lfHeight, -MulDiv(9, dpi, 72));
        }
    });
}

TEST_F(AboutDialogTest, ControlsAreToldToRedrawInTheirFont) {
    std::vector<std::pair<HWND, LPARAM>> requests;
    const ImportWatch<decltype(&SendMessageW)> watch(
        "SendMessageW", [&requests](HWND window, UINT message, WPARAM /*font*/, LPARAM redraw) {
            if (message == WM_SETFONT) {
                requests.emplace_back(window, redraw);
            }
        });
    OpenAndLook([&requests](HWND dialog) {
        const std::vector<std::pair<HWND, LPARAM>> expected = {{BodyOf(dialog), TRUE},
                                                               {ButtonOf(dialog), TRUE}};
        EXPECT_EQ(requests, expected);
    });
}

TEST_F(AboutDialogTest, EveryWayOfClosingGivesTheOwnerBack) {
    struct Case {
        const char* name;
        void (*act)(HWND dialog);
    };
    const Case cases[] = {
        {"Enter", [](HWND dialog) { PostMessageW(ButtonOf(dialog), WM_KEYDOWN, VK_RETURN, 0); }},
        {"Escape", [](HWND dialog) { PostMessageW(ButtonOf(dialog), WM_KEYDOWN, VK_ESCAPE, 0); }},
        {"Space",
         [](HWND dialog) {
             PostMessageW(ButtonOf(dialog), WM_KEYDOWN, VK_SPACE, 0);
             PostMessageW(ButtonOf(dialog), WM_KEYUP, VK_SPACE, 0);
         }},
        {"button", [](HWND dialog) { PostMessageW(ButtonOf(dialog), BM_CLICK, 0, 0); }},
        {"command of the button", [](HWND dialog) { PostMessageW(dialog, WM_COMMAND, 101, 0); }},
        {"WM_CLOSE", [](HWND dialog) { PostMessageW(dialog, WM_CLOSE, 0, 0); }},
        {"close box", [](HWND dialog) { PostMessageW(dialog, WM_SYSCOMMAND, SC_CLOSE, 0); }},
        {"quit message", [](HWND /*dialog*/) { PostQuitMessage(7); }},
    };
    ASSERT_NE(IsWindowEnabled(Control().Get()), FALSE);
    for (const Case& item : cases) {
        SCOPED_TRACE(item.name);
        HWND dialog = nullptr;
        Control().Run(
            [this] {
                ShowAboutDialog(Control().Get());
                MSG message{};
                EXPECT_EQ(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_NOREMOVE), FALSE)
                    << "posted again";
            },
            {AboutHasFocus,
             [&] {
                 EXPECT_EQ(IsWindowEnabled(Control().Get()), FALSE);
                 dialog = AboutDialog();
                 item.act(dialog);
                 return true;
             }},
            InTheEnd(CloseAbout));
        EXPECT_EQ(IsWindow(dialog), FALSE);
        EXPECT_EQ(AboutDialog(), nullptr);
        EXPECT_NE(IsWindowEnabled(Control().Get()), FALSE);
        EXPECT_EQ(GetForegroundWindow(), Control().Get());
    }
}

TEST_F(AboutDialogTest, OtherCommandsLeaveTheDialogOpen) {
    OpenAndLook([](HWND dialog) {
        for (const WPARAM command : {0U, 3U, 99U, 100U, 102U, 1004U, 1009U}) {
            SendMessageW(dialog, WM_COMMAND, command, 0);
            EXPECT_NE(IsWindow(dialog), FALSE) << command;
        }
    });
}

TEST_F(AboutDialogTest, SecondCallOpensNoSecondDialog) {
    const HWND other = Window(L"Other");
    HWND first = nullptr;
    Open({AboutHasFocus,
          [&] {
              first = AboutDialog();
              SetForegroundWindow(other);
              return true;
          },
          [&] { return GetForegroundWindow() == other; },
          [&] {
              ShowAboutDialog(Control().Get());
              EXPECT_EQ(VisibleWindowsOfClass(L"MorvaneAboutDialog"), std::vector<HWND>({first}));
              return true;
          },
          [&] { return GetForegroundWindow() == first && AboutHasFocus(); }});
    EXPECT_EQ(AboutDialog(), nullptr);
}

TEST_F(AboutDialogTest, DialogThatCannotBeCreatedLeavesTheOwnerAlone) {
    {
        const auto patch = Refuse<decltype(&CreateWindowExW), nullptr>("CreateWindowExW");
        Control().Forget();
        ShowAboutDialog(Control().Get());
        EXPECT_EQ(Control().Count(WM_ENABLE), 0U);
        EXPECT_NE(IsWindowEnabled(Control().Get()), FALSE);
    }
    OpenAndLook([](HWND dialog) { EXPECT_NE(dialog, nullptr) << "the next opening succeeds"; });
    EXPECT_EQ(Control().Count(WM_ENABLE), 2U);
}

TEST_F(AboutDialogTest, FailedClassRegistrationIsRetriedAtTheNextOpening) {
    EXPECT_EQ(MakeFirstOpening(Control()).refusedRegistrations, 1);
    EXPECT_EQ(MakeFirstOpening(Control()).ownerChanges, 0U);
    OpenAndLook([](HWND dialog) { EXPECT_NE(BodyOf(dialog), nullptr); });
}

TEST_F(AboutDialogTest, KeysOfOtherWindowsAreTranslatedBeforeTheyAreDispatched) {
    bool isWaiting = false;
    Control().On(WM_KEYDOWN, [this, &isWaiting] {
        MSG message{};
        isWaiting = PeekMessageW(&message, Control().Get(), WM_CHAR, WM_CHAR, PM_NOREMOVE) != FALSE;
    });
    Control().Forget();
    Open({AboutHasFocus,
          [this] { return PostMessageW(Control().Get(), WM_KEYDOWN, 'A', 0) != FALSE; },
          [this] { return Control().Count(WM_CHAR) == 1; }});
    EXPECT_TRUE(isWaiting);
}

}  // namespace
}  // namespace morvane::test
