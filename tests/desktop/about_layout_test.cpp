// The layout and the colours of the About dialog and its controls.

#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "base/gui_owners.h"
#include "desktop/about_fixture.h"
#include "support/import_patch.h"
#include "support/languages.h"
#include "support/screen.h"
#include "support/wait.h"
#include "support/window_owner.h"
#include "support/window_state.h"
#include "ui/about.h"
#include "ui/dialog_frame.h"

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

    // Waits for the dialog to be painted and returns a picture of its client area.
    [[nodiscard]] static Picture PaintedClient(HWND dialog, COLORREF background) {
        RECT client{};
        GetClientRect(dialog, &client);
        MapWindowPoints(dialog, nullptr, reinterpret_cast<POINT*>(&client), 2);
        Picture picture;
        EXPECT_TRUE(WaitUntil(
            [&] {
                picture = CaptureScreen(client);
                return picture.Count(background) > picture.pixels.size() / 2;
            },
            DefaultTimeout, Messages::PumpAll));
        return picture;
    }
};

TEST_F(AboutLayoutTest, LayoutFollowsTheTextInAllLanguages) {
    for (const InterfaceLanguage& language : AllLanguages) {
        ChooseLanguage(language.code);
        OpenAndLook([](HWND dialog) { ExpectLayout(dialog); });
    }
}

TEST_F(AboutLayoutTest, DialogIsSixteenPixelsFromTheCornerOfTheWorkAreaAnd420Wide) {
    OpenAndLook([](HWND dialog) {
        RECT work{};
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
        const RECT frame = WindowRect(dialog);
        EXPECT_EQ(frame.right, work.right - 16);
        EXPECT_EQ(frame.bottom, work.bottom - 16);
        EXPECT_EQ(frame.right - frame.left, 420);
    });
}

TEST_F(AboutLayoutTest, LongTextWrapsAndTheDialogGrowsInHeightOnly) {
    std::wstring text = L"Morvane\n\n";
    for (int word = 0; word < 60; ++word) {
        text += L"Versionsbezeichnung ";
    }
    LONG shortHeight = 0;
    WithBody(L"Morvane", [&](HWND dialog) {
        ExpectLayout(dialog);
        shortHeight = WindowSize(dialog).cy;
    });
    WithBody(text, [&](HWND dialog) {
        ExpectLayout(dialog);
        EXPECT_EQ(WindowSize(dialog).cx, 420);
        EXPECT_GT(WindowSize(dialog).cy, shortHeight + 100);
    });
}

TEST_F(AboutLayoutTest, DialogWithAMissingControlKeepsItsInitialSize) {
    for (const wchar_t* const missing : {L"Static", L"Button"}) {
        const ClassRefusal refusal(missing);
        SIZE size{};
        Open({[] { return AboutDialog() != nullptr; },
              [&size] {
                  size = WindowSize(AboutDialog());
                  return true;
              }});
        EXPECT_EQ(refusal.Count(), 1) << missing;
        EXPECT_EQ(size.cx, 420) << missing;
        EXPECT_EQ(size.cy, 180) << missing;
    }
    OpenAndLook(
        [](HWND dialog) { EXPECT_NE(WindowSize(dialog).cy, 180) << "or it shows nothing"; });
}

TEST_F(AboutLayoutTest, AmpersandsAreMeasuredAndShownLiterally) {
    WithBody(L"A & B && C\n\n&D", [](HWND dialog) { ExpectLayout(dialog); });
}

TEST_F(AboutLayoutTest, DialogStaysInTheCornerWhenTheTaskbarIsAtTheTop) {
    RECT previous{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &previous, 0);
    RECT below = {100, 60, 1100, 700};
    ASSERT_NE(SystemParametersInfoW(SPI_SETWORKAREA, 0, &below, 0), FALSE);
    RECT set{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &set, 0);
    const bool taken = EqualRect(&set, &below) != FALSE;
    if (taken) {
        OpenAndLook([](HWND dialog) {
            const RECT frame = WindowRect(dialog);
            EXPECT_EQ(frame.right, 1100 - 16);
            EXPECT_EQ(frame.bottom, 700 - 16);
        });
    }
    SystemParametersInfoW(SPI_SETWORKAREA, 0, &previous, 0);
    EXPECT_TRUE(taken) << "cannot change the work area here";
}

TEST_F(AboutLayoutTest, MovingToTheCornerChangesNothingElse) {
    const WindowOwner lower(CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 10, 10, 200,
                                            100, nullptr, nullptr, GetModuleHandleW(nullptr),
                                            nullptr));
    const WindowOwner upper(CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 10, 10, 200,
                                            100, nullptr, nullptr, GetModuleHandleW(nullptr),
                                            nullptr));
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
    PositionNearTray(nullptr, 16);
}

std::vector<PositionRequest> positionRequests;
decltype(&SetWindowPos) originalSetWindowPos = nullptr;

BOOL WINAPI RecordPosition(HWND window, HWND insertAfter, int x, int y, int width, int height,
                           UINT flags) {
    positionRequests.push_back(
        {.insertAfter = insertAfter, .x = x, .y = y, .cx = width, .cy = height, .flags = flags});
    return originalSetWindowPos(window, insertAfter, x, y, width, height, flags);
}

TEST_F(AboutLayoutTest, DialogIsSizedThenMovedWithoutActivation) {
    const ImportPatch<decltype(&SetWindowPos)> patch("SetWindowPos", RecordPosition);
    originalSetWindowPos = patch.Original();
    positionRequests.clear();
    OpenAndLook([](HWND dialog) {
        const RECT frame = WindowRect(dialog);
        const std::vector<PositionRequest> expected = {
            {.cx = 420, .cy = frame.bottom - frame.top, .flags = 0x16},
            {.x = frame.left, .y = frame.top, .flags = 0x15}};
        EXPECT_EQ(Described(positionRequests), Described(expected));
    });
}

TEST_F(AboutLayoutTest, ColoursFollowTheTheme) {
    struct Case {
        const char* name;
        DWORD light;
        COLORREF background;
        COLORREF text;
    };
    const Case cases[] = {
        {"light", 1, GetSysColor(COLOR_BTNFACE), GetSysColor(COLOR_WINDOWTEXT)},
        {"dark", 0, 0x00202020, 0x00FFFFFF},
    };
    for (const Case& item : cases) {
        AppThemeSetting::Set(item.light);
        OpenAndLook([&](HWND dialog) {
            const Picture client = PaintedClient(dialog, item.background);
            EXPECT_EQ(client.At(0, 0), item.background) << item.name;
            EXPECT_EQ(client.At(client.width - 1, client.height - 1), item.background) << item.name;
            const RECT body = PlaceOf(BodyOf(dialog));
            std::size_t ink = 0;
            std::size_t ground = 0;
            for (LONG y = body.top; y < body.bottom; ++y) {
                for (LONG x = body.left; x < body.right; ++x) {
                    ink += client.At(x, y) == item.text ? 1U : 0U;
                    ground += client.At(x, y) == item.background ? 1U : 0U;
                }
            }
            EXPECT_GE(ink, 20U) << item.name;
            EXPECT_GT(ground, ink) << item.name;
        });
    }
}

TEST_F(AboutLayoutTest, OpenDialogKeepsItsColoursWhenTheThemeIsSwitched) {
    AppThemeSetting::Set(0);
    OpenAndLook([](HWND dialog) {
        AppThemeSetting::Set(1);
        SendMessageW(dialog, WM_THEMECHANGED, 0, 0);
        RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
        EXPECT_EQ(PaintedClient(dialog, 0x00202020).At(0, 0), 0x00202020U);
    });
}

TEST_F(AboutLayoutTest, BackgroundIsErasedByTheDialogItself) {
    OpenAndLook([](HWND dialog) {
        const WindowDc dc(dialog);
        EXPECT_EQ(SendMessageW(dialog, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc.get()), 0), 1);
    });
}

TEST_F(AboutLayoutTest, TextAndButtonGetTheSameColours) {
    AppThemeSetting::Set(0);
    OpenAndLook([](HWND dialog) {
        for (const UINT message : {UINT{WM_CTLCOLORSTATIC}, UINT{WM_CTLCOLORBTN}}) {
            const WindowDc dc(BodyOf(dialog));
            auto* const brush = reinterpret_cast<HBRUSH>(
                SendMessageW(dialog, message, reinterpret_cast<WPARAM>(dc.get()),
                             reinterpret_cast<LPARAM>(BodyOf(dialog))));
            LOGBRUSH data{};
            ASSERT_NE(GetObjectW(brush, sizeof(data), &data), 0);
            EXPECT_EQ(data.lbColor, 0x00202020U);
            EXPECT_EQ(GetTextColor(dc.get()), 0x00FFFFFFU);
            EXPECT_EQ(GetBkMode(dc.get()), TRANSPARENT);
        }
    });
}

}  // namespace
}  // namespace morvane::test
