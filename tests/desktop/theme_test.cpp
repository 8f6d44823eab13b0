// The colours and fonts of dialogs, in the light and the dark theme.

#include "ui/theme.h"

#include <bit>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/gui_owners.h"
#include "desktop/about_fixture.h"
#include "desktop/app_theme_setting.h"
#include "desktop/canvas.h"
#include "support/import_patch.h"
#include "support/test_environment.h"
#include "support/window_owner.h"

namespace morvane::test {
namespace {

constexpr COLORREF DarkBackground = 0x00202020;
constexpr COLORREF DarkText = 0x00FFFFFF;

class ThemeTest : public testing::Test {
protected:
    void SetUp() override {
        MORVANE_REQUIRE_DISPOSABLE_PROFILE();
        setting_.emplace();
        dialog_.reset(CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 100, 100, 60, 40, nullptr,
                                      nullptr, GetModuleHandleW(nullptr), nullptr));
        ASSERT_TRUE(dialog_);
    }

    [[nodiscard]] HWND Dialog() const { return dialog_.get(); }

    [[nodiscard]] static HWND Child(HWND parent) {
        return CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 10, 10, parent, nullptr,
                               GetModuleHandleW(nullptr), nullptr);
    }

    [[nodiscard]] static COLORREF ColourOf(const Brush& brush) {
        LOGBRUSH data{};
        EXPECT_NE(GetObjectW(brush.get(), sizeof(data), &data), 0);
        EXPECT_EQ(data.lbStyle, UINT{BS_SOLID});
        return data.lbColor;
    }

private:
    // Empty if the test is skipped: the setting is then the user's own.
    std::optional<AppThemeSetting> setting_;
    WindowOwner dialog_;
};

TEST_F(ThemeTest, OnlyTheNumberZeroMeansDark) {
    EXPECT_TRUE(IsLightAppTheme()) << "absent";
    struct Case {
        const char* name;
        DWORD type;
        DWORD64 data;
        DWORD size;
        bool light;
    };
    const Case cases[] = {
        {"0", REG_DWORD, 0, sizeof(DWORD), false},
        {"1", REG_DWORD, 1, sizeof(DWORD), true},
        {"2", REG_DWORD, 2, sizeof(DWORD), true},
        {"largest", REG_DWORD, 0xFFFFFFFF, sizeof(DWORD), true},
        {"text", REG_SZ, L'0', 2 * sizeof(wchar_t), true},
        {"64 bits", REG_QWORD, 0, sizeof(DWORD64), true},
        {"bytes", REG_BINARY, 0, sizeof(DWORD), true},
        {"0 again", REG_DWORD, 0, sizeof(DWORD), false},
    };
    for (const Case& item : cases) {
        AppThemeSetting::Write(item.type, &item.data, item.size);
        EXPECT_EQ(IsLightAppTheme(), item.light) << item.name;
    }
}

TEST_F(ThemeTest, ColoursFollowTheThemeAndReplaceTheFormerBrush) {
    struct Case {
        const char* name;
        std::optional<DWORD> value;
        COLORREF background;
        COLORREF text;
    };
    const Case cases[] = {
        {"absent", std::nullopt, GetSysColor(COLOR_BTNFACE), GetSysColor(COLOR_WINDOWTEXT)},
        {"dark", 0, DarkBackground, DarkText},
        {"light", 1, GetSysColor(COLOR_BTNFACE), GetSysColor(COLOR_WINDOWTEXT)},
    };
    DialogTheme theme;
    for (const Case& item : cases) {
        const HBRUSH former = theme.brush.get();
        AppThemeSetting::Set(item.value);
        theme.textColour = RGB(1, 2, 3);
        ApplyTheme(Dialog(), theme);
        EXPECT_EQ(ColourOf(theme.brush), item.background) << item.name;
        EXPECT_EQ(theme.textColour, item.text) << item.name;
        EXPECT_FALSE(theme.font) << item.name;
        EXPECT_TRUE(theme.brush.get() == former || GetObjectType(former) == 0) << item.name;
        DialogTheme withoutAWindow;
        ApplyTheme(nullptr, withoutAWindow);
        EXPECT_EQ(ColourOf(withoutAWindow.brush), item.background) << item.name;
    }
}

// A window and what is asked for it, in words.
using ThemeRequest = std::pair<HWND, std::wstring>;
std::vector<ThemeRequest> themeRequests;

HRESULT WINAPI RecordAttribute(HWND window, DWORD attribute, LPCVOID value, DWORD size) {
    const BOOL isOn = size == sizeof(BOOL) ? *static_cast<const BOOL*>(value) : -1;
    themeRequests.emplace_back(window, std::to_wstring(attribute) + L": " + std::to_wstring(isOn));
    return S_OK;
}

bool WINAPI AllowDarkMode(HWND window, bool allow) {
    themeRequests.emplace_back(window, allow ? L"dark" : L"not dark");
    return true;
}

HRESULT WINAPI RecordThemeName(HWND window, LPCWSTR name, LPCWSTR list) {
    themeRequests.emplace_back(window, std::wstring(name) + (list == nullptr ? L"" : L" listed"));
    return S_OK;
}

bool Is(HMODULE library, const wchar_t* libraryName, std::string_view name,
        std::string_view wanted) {
    return library == GetModuleHandleW(libraryName) && name == wanted;
}

FARPROC WINAPI FindThemeFunction(HMODULE library, LPCSTR name) {
    if (Is(library, L"dwmapi.dll", name, "DwmSetWindowAttribute")) {
        return std::bit_cast<FARPROC>(&RecordAttribute);
    }
    if (Is(library, L"uxtheme.dll", name, "AllowDarkModeForWindow")) {
        return std::bit_cast<FARPROC>(&AllowDarkMode);
    }
    return Is(library, L"uxtheme.dll", name, "SetWindowTheme")
               ? std::bit_cast<FARPROC>(&RecordThemeName)
               : nullptr;
}

TEST_F(ThemeTest, WindowAndItsDescendantsGetTheExplorerLook) {
    const HWND child = Child(Dialog());
    const HWND grandchild = Child(child);
    const HWND second = Child(Dialog());
    const ImportPatch<decltype(&GetProcAddress)> patch("GetProcAddress", FindThemeFunction);
    themeRequests.clear();
    DialogTheme theme;
    ApplyTheme(Dialog(), theme);
    const std::vector<ThemeRequest> expected = {{Dialog(), L"20: 0"},
                                                {Dialog(), L"Explorer"},
                                                {child, L"Explorer"},
                                                {grandchild, L"Explorer"},
                                                {second, L"Explorer"}};
    EXPECT_EQ(themeRequests, expected);
}

using AboutThemeTest = AboutDialogTest;

TEST_F(AboutThemeTest, EveryThemeGetsTheExplorerLookAndATitleBarAndOnlyTheDarkOneDarkMode) {
    const ImportPatch<decltype(&GetProcAddress)> patch("GetProcAddress", FindThemeFunction);
    for (const std::optional<DWORD> light : {std::optional<DWORD>(), {1}, {0}}) {
        AppThemeSetting::Set(light);
        themeRequests.clear();
        std::vector<ThemeRequest> expected;
        OpenAndLook([&expected, dark = light == DWORD{0}](HWND dialog) {
            expected = {{dialog, dark ? L"20: 1" : L"20: 0"}};
            if (dark) {
                expected.emplace_back(dialog, L"dark");
            }
            for (const HWND window : {dialog, BodyOf(dialog), ButtonOf(dialog)}) {
                expected.emplace_back(window, L"Explorer");
            }
        });
        EXPECT_EQ(themeRequests, expected) << testing::PrintToString(light);
    }
}

TEST_F(ThemeTest, InterfaceFontIsSegoeScaledToTheScreen) {
    const WindowDc screen(nullptr);
    const int dpi = GetDeviceCaps(screen.get(), LOGPIXELSY);
    for (const int points : {9, 12, 1, 40}) {
        const Font font = CreateUiFont(points);
        LOGFONTW data{};
        ASSERT_NE(GetObjectW(font.get(), sizeof(data), &data), 0);
        // Rounded to the nearest pixel.
        EXPECT_EQ(data.lfHeight, -((points * dpi * 2 + 72) / 144)) << points;
        EXPECT_EQ(data.lfWidth, 0);
        EXPECT_EQ(data.lfEscapement, 0);
        EXPECT_EQ(data.lfOrientation, 0);
        EXPECT_EQ(data.lfWeight, 400);
        EXPECT_EQ(data.lfItalic, 0);
        EXPECT_EQ(data.lfUnderline, 0);
        EXPECT_EQ(data.lfStrikeOut, 0);
        EXPECT_EQ(data.lfCharSet, DEFAULT_CHARSET);
        EXPECT_EQ(data.lfOutPrecision, OUT_DEFAULT_PRECIS);
        EXPECT_EQ(data.lfClipPrecision, CLIP_DEFAULT_PRECIS);
        EXPECT_EQ(data.lfQuality, CLEARTYPE_QUALITY);
        EXPECT_EQ(data.lfPitchAndFamily, DEFAULT_PITCH);
        EXPECT_STREQ(data.lfFaceName, L"Segoe UI");
    }
}

TEST_F(ThemeTest, ControlsAreDrawnTransparentlyInTheTextColour) {
    for (const bool hasBrush : {false, true}) {
        const Canvas canvas(10, 10);
        DialogTheme theme;
        theme.textColour = RGB(12, 34, 56);
        theme.brush.reset(hasBrush ? CreateSolidBrush(RGB(9, 9, 9)) : nullptr);
        EXPECT_EQ(ThemedCtlColor(canvas.Context(), theme),
                  hasBrush ? theme.brush.get() : GetSysColorBrush(COLOR_BTNFACE));
        EXPECT_EQ(GetBkMode(canvas.Context()), TRANSPARENT) << hasBrush;
        EXPECT_EQ(GetTextColor(canvas.Context()), RGB(12, 34, 56)) << hasBrush;
    }
}

TEST_F(ThemeTest, BackgroundFillsTheClientAreaAndNothingElse) {
    RECT client{};
    GetClientRect(Dialog(), &client);
    ASSERT_TRUE(client.right == 60 && client.bottom == 40);
    const Canvas canvas(80, 60);
    DialogTheme theme;
    EXPECT_FALSE(EraseThemedBackground(Dialog(), canvas.Context(), theme)) << "without a brush";
    EXPECT_EQ(canvas.PointsOf(Canvas::Untouched).size(), 80U * 60U);
    theme.brush.reset(CreateSolidBrush(RGB(9, 8, 7)));
    EXPECT_TRUE(EraseThemedBackground(Dialog(), canvas.Context(), theme));
    EXPECT_EQ(canvas.PointsOf(RGB(9, 8, 7)).size(), 60U * 40U);
    EXPECT_EQ(canvas.At(59, 39), RGB(9, 8, 7));
    EXPECT_EQ(canvas.PointsOf(Canvas::Untouched).size(), 80U * 60U - 60U * 40U);
}

TEST_F(ThemeTest, ReleaseDeletesTheFontAndTheBrush) {
    DialogTheme theme;
    theme.font = CreateUiFont(9);
    ApplyTheme(Dialog(), theme);
    const HFONT font = theme.font.get();
    const HBRUSH brush = theme.brush.get();
    ASSERT_EQ(GetObjectType(font), DWORD{OBJ_FONT});
    ASSERT_EQ(GetObjectType(brush), DWORD{OBJ_BRUSH});
    for (const char* const when : {"used", "empty"}) {
        ReleaseTheme(theme);
        EXPECT_FALSE(theme.font || theme.brush) << when;
        EXPECT_EQ(GetObjectType(font), 0U) << when;
        EXPECT_EQ(GetObjectType(brush), 0U) << when;
    }
}

}  // namespace
}  // namespace morvane::test
