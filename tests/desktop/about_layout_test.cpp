// The layout and the colours of the About dialog and its controls.

#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "base/gui_owners.h"
#include "desktop/about_fixture.h"
#include "desktop/canvas.h"
#include "support/import_patch.h"
#include "support/languages.h"
#include "support/screen.h"
#include "support/wait.h"
#include "support/window_owner.h"
#include "support/window_state.h"
#include "ui/about.h"
#include "ui/dialog_frame.h"
#include "ui/product_version.h"

namespace morvane::test {
namespace {

struct Layout {
    RECT body;
    RECT button;
    RECT frame;
};

Font InterfaceFont() {
    const WindowDc screen(nullptr);
    return Font(CreateFontW(-MulDiv(9, GetDeviceCaps(screen.get(), LOGPIXELSY), 72), 0, 0, 0, 400,
                            FALSE, FALSE, FALSE, DEFAULT_CHARSET, 0, 0, CLEARTYPE_QUALITY, 0,
                            L"Segoe UI"));
}

// The expected layout for this text, computed without creating a window.
Layout ExpectedLayout(const std::wstring& body, const std::wstring& close) {
    RECT frame{0, 0, 0, 0};
    AdjustWindowRectEx(&frame, WS_CAPTION | WS_SYSMENU, FALSE, WS_EX_DLGMODALFRAME | WS_EX_TOPMOST);
    const LONG clientWidth = 420 - (frame.right - frame.left);
    const WindowDc screen(nullptr);
    const Font font = InterfaceFont();
    const SelectGuard selected(screen.get(), font.get());
    RECT text{0, 0, clientWidth - 32, 0};
    DrawTextW(screen.get(), body.c_str(), -1, &text, 0xC10);
    const LONG th = text.bottom - text.top;
    SIZE size{};
    GetTextExtentPoint32W(screen.get(), close.c_str(), static_cast<int>(close.size()), &size);
    const LONG bw = size.cx + 28;
    RECT work{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    const LONG height = (frame.bottom - frame.top) + th + 32 + 46;
    return {{16, 16, clientWidth - 16, 16 + th + 4},
            {clientWidth - bw - 16, th + 32, clientWidth - 16, th + 62},
            {work.right - 420 - 16, work.bottom - height - 16, work.right - 16, work.bottom - 16}};
}

void ExpectSame(const RECT& actual, const RECT& expected, const std::string& what) {
    EXPECT_EQ(actual.left, expected.left) << what;
    EXPECT_EQ(actual.top, expected.top) << what;
    EXPECT_EQ(actual.right, expected.right) << what;
    EXPECT_EQ(actual.bottom, expected.bottom) << what;
}

void ExpectLayout(HWND dialog) {
    const Layout expected =
        ExpectedLayout(WindowTitle(BodyOf(dialog)), WindowTitle(ButtonOf(dialog)));
    ExpectSame(PlaceOf(BodyOf(dialog)), expected.body, "text");
    ExpectSame(PlaceOf(ButtonOf(dialog)), expected.button, "button");
    ExpectSame(WindowRect(dialog), expected.frame, "dialog");
}

struct ThemeCase {
    DWORD light;
    COLORREF background;
    COLORREF text;
};

std::vector<ThemeCase> Themes() {
    return {{0, 0x00202020, 0x00FFFFFF},
            {1, GetSysColor(COLOR_BTNFACE), GetSysColor(COLOR_WINDOWTEXT)},
            {0, 0x00202020, 0x00FFFFFF}};
}

// How many pixels of the dialog's text have this colour.
std::size_t PixelsOfText(const Picture& client, HWND dialog, COLORREF colour) {
    const RECT body = PlaceOf(BodyOf(dialog));
    std::size_t count = 0;
    for (LONG y = body.top; y < body.bottom; ++y) {
        for (LONG x = body.left; x < body.right; ++x) {
            count += client.At(x, y) == colour ? 1U : 0U;
        }
    }
    return count;
}

class AboutLayoutTest : public AboutDialogTest {
protected:
    // Opens a dialog with the test's own text.
    void WithBody(const std::wstring& text, const std::function<void(HWND dialog)>& look) {
        // The class is registered by the first opening.
        OpenAndLook([](HWND) {});
        AboutDialogState state;
        state.body = text;
        const WindowOwner dialog(CreateWindowExW(
            0x9, L"MorvaneAboutDialog", L"About", 0x10C80000, CW_USEDEFAULT, CW_USEDEFAULT, 420,
            180, Control().Get(), nullptr, GetModuleHandleW(nullptr), &state));
        ASSERT_TRUE(dialog);
        ASSERT_EQ(WindowTitle(BodyOf(dialog.get())), text);
        look(dialog.get());
    }

    // A picture of the client area, once its background and its text are on the screen.
    [[nodiscard]] static Picture PaintedClient(HWND dialog, const ThemeCase& theme) {
        constexpr std::size_t LeastInk = 20;
        RECT client{};
        GetClientRect(dialog, &client);
        MapWindowPoints(dialog, nullptr, reinterpret_cast<POINT*>(&client), 2);
        Picture picture;
        EXPECT_TRUE(WaitUntil(
            [&] {
                picture = CaptureScreen(client);
                return picture.Count(theme.background) > picture.pixels.size() / 2 &&
                       PixelsOfText(picture, dialog, theme.text) >= LeastInk;
            },
            DefaultTimeout, Messages::PumpAll));
        return picture;
    }
};

TEST_F(AboutLayoutTest, TextsAndLayoutFollowTheLanguage) {
    EXPECT_EQ(GetProductVersion(), L"?") << "the tests have no version of their own";
    for (const auto& [language, code, longCode] : AllLanguages) {
        ChooseLanguage(code);
        OpenAndLook([&](HWND dialog) {
            EXPECT_EQ(WindowTitle(dialog), ExpectedText(StrAboutTitle, language));
            EXPECT_EQ(WindowTitle(BodyOf(dialog)),
                      L"Morvane\n\n" + ExpectedFormat(StrAboutVersion, L"?", language));
            EXPECT_EQ(WindowTitle(ButtonOf(dialog)), ExpectedText(StrClose, language));
            ExpectLayout(dialog);
        });
    }
}

TEST_F(AboutLayoutTest, LongTextWrapsAndTheDialogGrowsInHeightOnly) {
    const auto heightFor = [this](const std::wstring& word) {
        std::wstring text = L"Morvane\n\n";
        for (int count = 0; count < 60; ++count) {
            text += word;
        }
        LONG height = 0;
        WithBody(text, [&height](HWND dialog) {
            ExpectLayout(dialog);
            height = WindowSize(dialog).cy;
        });
        return height;
    };
    const LONG shortHeight = heightFor(L"");
    EXPECT_GT(heightFor(L"Versionsbezeichnung "), shortHeight + 100);
    // Half as high if "&&" stood for one character.
    EXPECT_GT(heightFor(L"&&&&&&&&&& "), shortHeight + 100);
}

std::wstring missingClass;
decltype(&CreateWindowExW) originalCreate = nullptr;

TEST_F(AboutLayoutTest, DialogWithAMissingControlKeepsItsInitialSize) {
    const ImportPatch<decltype(&CreateWindowExW)> patch(
        "CreateWindowExW", [](DWORD style, LPCWSTR className, auto... rest) {
            return className == missingClass ? nullptr : originalCreate(style, className, rest...);
        });
    originalCreate = patch.Original();
    for (const auto& [missing, controlId] :
         {std::pair{L"STATIC", 100}, std::pair{L"BUTTON", 101}}) {
        missingClass = missing;
        Open({[] { return AboutDialog() != nullptr; },
              [id = controlId] {
                  const HWND dialog = AboutDialog();
                  EXPECT_EQ(GetDlgItem(dialog, id), nullptr);
                  EXPECT_EQ(WindowSize(dialog).cx, 420) << id;
                  EXPECT_EQ(WindowSize(dialog).cy, 180) << id;
                  return true;
              }});
    }
    missingClass.clear();
    OpenAndLook(
        [](HWND dialog) { EXPECT_NE(WindowSize(dialog).cy, 180) << "or it shows nothing"; });
}

TEST_F(AboutLayoutTest, DialogStaysInTheCornerWhenTheTaskbarIsAtTheTop) {
    RECT previous{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &previous, 0);
    RECT below = {100, 60, 1100, 700};
    ASSERT_NE(SystemParametersInfoW(SPI_SETWORKAREA, 0, &below, 0), FALSE);
    OpenAndLook([](HWND dialog) {
        const RECT frame = WindowRect(dialog);
        EXPECT_EQ(frame.right, 1100 - 16);
        EXPECT_EQ(frame.bottom, 700 - 16);
    });
    SystemParametersInfoW(SPI_SETWORKAREA, 0, &previous, 0);
}

TEST_F(AboutLayoutTest, MovingToTheCornerChangesNothingElse) {
    const auto window = [] {
        return WindowOwner(CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 10, 10, 200,
                                           100, nullptr, nullptr, GetModuleHandleW(nullptr),
                                           nullptr));
    };
    const WindowOwner lower = window();
    const WindowOwner upper = window();
    ASSERT_TRUE(IsAbove(upper.get(), lower.get()));
    const HWND active = GetActiveWindow();
    RECT work{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    for (const int margin : {0, 16, -20, 300}) {
        PositionNearTray(lower.get(), margin);
        ExpectSame(WindowRect(lower.get()),
                   {work.right - 200 - margin, work.bottom - 100 - margin, work.right - margin,
                    work.bottom - margin},
                   std::to_string(margin));
        EXPECT_TRUE(IsAbove(upper.get(), lower.get()));
        EXPECT_EQ(GetActiveWindow(), active);
    }
}

TEST_F(AboutLayoutTest, DialogIsSizedThenMovedWithoutActivation) {
    std::vector<Request> expected;
    const std::vector<Request> requests = RequestsOf([&] {
        OpenAndLook([&expected](HWND dialog) {
            const RECT frame = WindowRect(dialog);
            const auto words = [](LONG number) { return std::to_string(number); };
            expected = {
                {dialog, "top 0,0 420x" + words(frame.bottom - frame.top) + " 0016"},
                {dialog, "top " + words(frame.left) + "," + words(frame.top) + " 0x0 0015"}};
        });
    });
    EXPECT_EQ(requests, expected);
}

TEST_F(AboutLayoutTest, ColoursFollowTheTheme) {
    for (const ThemeCase& theme : Themes()) {
        SCOPED_TRACE(theme.light);
        AppThemeSetting::Set(theme.light);
        OpenAndLook([&](HWND dialog) {
            const Picture client = PaintedClient(dialog, theme);
            EXPECT_EQ(client.At(0, 0), theme.background);
            EXPECT_EQ(client.At(client.width - 1, client.height - 1), theme.background);
            EXPECT_GT(PixelsOfText(client, dialog, theme.background),
                      PixelsOfText(client, dialog, theme.text));
        });
    }
}

TEST_F(AboutLayoutTest, OpenDialogKeepsItsColoursAndLeavesNothingBehind) {
    for (const ThemeCase& theme : Themes()) {
        SCOPED_TRACE(theme.light);
        HWND window = nullptr;
        HGDIOBJ font = nullptr;
        HGDIOBJ brush = nullptr;
        AppThemeSetting::Set(theme.light);
        OpenAndLook([&](HWND dialog) {
            AppThemeSetting::Set(1 - theme.light);
            SendMessageW(dialog, WM_THEMECHANGED, 0, 0);
            window = dialog;
            font = reinterpret_cast<HGDIOBJ>(SendMessageW(ButtonOf(dialog), WM_GETFONT, 0, 0));
            EXPECT_EQ(GetObjectType(font), DWORD{OBJ_FONT});
            for (const UINT message : {UINT{WM_CTLCOLORSTATIC}, UINT{WM_CTLCOLORBTN}}) {
                const Canvas canvas(10, 10);
                const auto dc = reinterpret_cast<WPARAM>(canvas.Context());
                brush = reinterpret_cast<HGDIOBJ>(
                    SendMessageW(dialog, message, dc, reinterpret_cast<LPARAM>(BodyOf(dialog))));
                LOGBRUSH data{};
                EXPECT_NE(GetObjectW(brush, sizeof(data), &data), 0);
                EXPECT_EQ(data.lbColor, theme.background);
                EXPECT_EQ(GetTextColor(canvas.Context()), theme.text);
                EXPECT_EQ(GetBkMode(canvas.Context()), TRANSPARENT);
                EXPECT_EQ(SendMessageW(dialog, WM_ERASEBKGND, dc, 0), 1);
                EXPECT_EQ(canvas.At(0, 0), theme.background);
            }
        });
        EXPECT_EQ(IsWindow(window), FALSE);
        EXPECT_EQ(GetObjectType(font), 0U);
        EXPECT_EQ(GetObjectType(brush), 0U);
    }
}

}  // namespace
}  // namespace morvane::test
