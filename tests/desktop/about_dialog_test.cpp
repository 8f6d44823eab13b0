// The About dialog in this process: its parts, how it opens and how it closes.

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "base/gui_owners.h"
#include "desktop/about_fixture.h"
#include "pin/enforcement.h"
#include "support/import_patch.h"
#include "support/languages.h"
#include "support/test_environment.h"
#include "support/wait.h"
#include "support/window_state.h"
#include "ui/about.h"
#include "ui/product_version.h"

namespace morvane::test {
namespace {

DWORD StyleOf(HWND window) {
    return static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE));
}

DWORD ExStyleOf(HWND window) {
    return static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE));
}

bool IsClosed() {
    return AboutDialog() == nullptr;
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

TEST_F(AboutDialogTest, DialogAndItsControlsHaveTheExplorerLook) {
    OpenAndLook([](HWND dialog) {
        EXPECT_TRUE(HasThemeName(dialog, L"Explorer"));
        EXPECT_TRUE(HasThemeName(BodyOf(dialog), L"Explorer"));
        EXPECT_TRUE(HasThemeName(ButtonOf(dialog), L"Explorer"));
    });
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

std::vector<std::pair<HWND, LPARAM>> fontRequests;
decltype(&SendMessageW) originalSend = nullptr;

LRESULT WINAPI RecordFontRequest(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_SETFONT) {
        fontRequests.emplace_back(window, lParam);
    }
    return originalSend(window, message, wParam, lParam);
}

TEST_F(AboutDialogTest, ControlsAreToldToRedrawInTheirFont) {
    const ImportPatch<decltype(&SendMessageW)> patch("SendMessageW", RecordFontRequest);
    originalSend = patch.Original();
    fontRequests.clear();
    OpenAndLook([](HWND dialog) {
        const std::vector<std::pair<HWND, LPARAM>> expected = {{BodyOf(dialog), TRUE},
                                                               {ButtonOf(dialog), TRUE}};
        EXPECT_EQ(fontRequests, expected);
    });
}

TEST_F(AboutDialogTest, TextsAreInTheChosenLanguage) {
    EXPECT_EQ(GetProductVersion(), L"?") << "the tests have no version of their own";
    for (const auto& [language, code, longCode] : AllLanguages) {
        ChooseLanguage(code);
        OpenAndLook([&](HWND dialog) {
            EXPECT_EQ(WindowTitle(dialog), ExpectedText(StrAboutTitle, language));
            EXPECT_EQ(WindowTitle(BodyOf(dialog)),
                      L"Morvane\n\n" + ExpectedFormat(StrAboutVersion, L"?", language));
            EXPECT_EQ(WindowTitle(ButtonOf(dialog)), ExpectedText(StrClose, language));
        });
    }
}

TEST_F(AboutDialogTest, OwnerIsDisabledWhileTheDialogIsOpenAndInTheForegroundAfterwards) {
    ASSERT_NE(IsWindowEnabled(Control().Get()), FALSE);
    OpenAndLook([this](HWND) { EXPECT_EQ(IsWindowEnabled(Control().Get()), FALSE); });
    EXPECT_NE(IsWindowEnabled(Control().Get()), FALSE);
    EXPECT_EQ(GetForegroundWindow(), Control().Get());
}

TEST_F(AboutDialogTest, EveryWayOfClosingWorks) {
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
    };
    for (const Case& item : cases) {
        bool returned = false;
        HWND dialog = nullptr;
        Control().Run(
            [this, &returned] {
                ShowAboutDialog(Control().Get());
                returned = true;
            },
            {AboutHasFocus,
             [&] {
                 dialog = AboutDialog();
                 item.act(dialog);
                 return true;
             }},
            InTheEnd(CloseAbout));
        EXPECT_TRUE(returned) << item.name;
        EXPECT_FALSE(IsWindow(dialog)) << item.name;
        EXPECT_TRUE(IsClosed()) << item.name;
        EXPECT_NE(IsWindowEnabled(Control().Get()), FALSE) << item.name;
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

TEST_F(AboutDialogTest, EachOpeningCreatesItsOwnBrushAndLeavesNothingBehind) {
    for (const DWORD light : {0U, 1U, 0U, 0U}) {
        HWND window = nullptr;
        HGDIOBJ font = nullptr;
        HGDIOBJ brush = nullptr;
        AppThemeSetting::Set(light);
        OpenAndLook([&](HWND dialog) {
            window = dialog;
            font = reinterpret_cast<HGDIOBJ>(SendMessageW(ButtonOf(dialog), WM_GETFONT, 0, 0));
            const WindowDc dc(BodyOf(dialog));
            brush = reinterpret_cast<HGDIOBJ>(
                SendMessageW(dialog, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc.get()),
                             reinterpret_cast<LPARAM>(BodyOf(dialog))));
            EXPECT_EQ(GetObjectType(font), DWORD{OBJ_FONT});
            LOGBRUSH data{};
            EXPECT_NE(GetObjectW(brush, sizeof(data), &data), 0);
            EXPECT_EQ(data.lbColor, light != 0 ? GetSysColor(COLOR_BTNFACE) : 0x00202020U);
        });
        EXPECT_EQ(IsWindow(window), FALSE);
        EXPECT_EQ(GetObjectType(font), 0U);
        EXPECT_EQ(GetObjectType(brush), 0U);
    }
}

TEST_F(AboutDialogTest, SecondCallOpensNoSecondDialog) {
    const HWND other = Window(L"Other");
    HWND first = nullptr;
    Open({AboutHasFocus,
          [&] {
              first = AboutDialog();
              SetForegroundWindow(other);
              return GetForegroundWindow() == other;
          },
          [&] {
              ShowAboutDialog(Control().Get());
              EXPECT_EQ(VisibleWindowsOfClass(L"MorvaneAboutDialog"), std::vector<HWND>({first}));
              return true;
          },
          [&] { return GetForegroundWindow() == first && AboutHasFocus(); }});
    EXPECT_TRUE(IsClosed());
}

TEST_F(AboutDialogTest, DialogThatCannotBeCreatedLeavesTheOwnerAlone) {
    {
        const ClassRefusal refusal(L"MorvaneAboutDialog");
        Control().Forget();
        ShowAboutDialog(Control().Get());
        EXPECT_EQ(refusal.Count(), 1);
        EXPECT_EQ(Control().Count(WM_ENABLE), 0U);
        EXPECT_NE(IsWindowEnabled(Control().Get()), FALSE);
    }
    OpenAndLook([](HWND dialog) { EXPECT_NE(dialog, nullptr) << "the next opening succeeds"; });
    EXPECT_EQ(Control().Count(WM_ENABLE), 2U);
}

TEST_F(AboutDialogTest, FailedClassRegistrationIsRetriedAtTheNextOpening) {
    EXPECT_TRUE(ResultOfFirstOpening().foundClassTaken);
    EXPECT_TRUE(ResultOfFirstOpening().triedToCreate) << "with the class that took the name";
    EXPECT_FALSE(ResultOfFirstOpening().sawOwnerDisabled);
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

TEST_F(AboutDialogTest, QuitMessageEndsTheDialogAndIsNotPostedAgain) {
    Control().Run([this] { ShowAboutDialog(Control().Get()); },
                  {AboutHasFocus,
                   [] {
                       PostQuitMessage(7);
                       return true;
                   }},
                  InTheEnd(CloseAbout));
    EXPECT_TRUE(IsClosed());
    EXPECT_NE(IsWindowEnabled(Control().Get()), FALSE);
    MSG message{};
    EXPECT_EQ(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE), FALSE);
    OpenAndLook([](HWND dialog) { EXPECT_NE(dialog, nullptr) << "and it opens again"; });
}

TEST_F(AboutDialogTest, RaisedDialogIsAboveWindowsRaisedByAPass) {
    ASSERT_TRUE(WriteSettings("cover\n"));
    const HWND cover = Other().Create(
        {.title = L"Cover", .style = WS_POPUP, .x = 0, .y = 0, .width = 1280, .height = 800});
    RaiseAboutDialog();
    OpenAndLook([&](HWND dialog) {
        Other().ForgetRecords(cover);
        const RECT before = WindowRect(dialog);
        ApplyAll();
        EXPECT_TRUE(IsAbove(cover, dialog)) << "covered by the pass";
        // More than once: a busy desktop sometimes raises the window late.
        EXPECT_TRUE(WaitUntil([&] {
            RaiseAboutDialog();
            return IsAbove(dialog, cover);
        }));
        const RECT after = WindowRect(dialog);
        EXPECT_NE(EqualRect(&before, &after), FALSE);
    });
    EXPECT_EQ(Asked(cover), std::vector<std::string>({TopmostRequest}));
}

}  // namespace
}  // namespace morvane::test
