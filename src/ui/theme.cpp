#include "ui/theme.h"

#include "base/system_library.h"

#include <dwmapi.h>
#include <uxtheme.h>

namespace morvane {
namespace {

constexpr COLORREF DarkBackground = RGB(32, 32, 32);
constexpr COLORREF DarkText = RGB(255, 255, 255);
constexpr DWORD ImmersiveDarkMode = 20;  // DWMWA_USE_IMMERSIVE_DARK_MODE

using SetWindowThemeFunction = decltype(&SetWindowTheme);

void SetTitleBarTheme(HWND dialog, bool light) {
    const Module library = LoadSystemLibrary(L"dwmapi.dll");
    const auto setAttribute =
        FindExport<decltype(&DwmSetWindowAttribute)>(library, "DwmSetWindowAttribute");
    if (setAttribute != nullptr) {
        const BOOL dark = light ? FALSE : TRUE;
        // Best effort: Windows 10 before version 2004 does not know the attribute and keeps its
        // light title bar.
        setAttribute(dialog, ImmersiveDarkMode, &dark, sizeof(dark));
    }
}

void AllowDarkMode(HWND dialog, const Module& library) {
    using AllowFunction = bool(WINAPI*)(HWND window, bool allow);
    // By name only: the numbers of unnamed exports change between versions of Windows.
    const auto allow = FindExport<AllowFunction>(library, "AllowDarkModeForWindow");
    if (allow != nullptr) {
        allow(dialog, true);
    }
}

BOOL CALLBACK SetExplorerTheme(HWND window, LPARAM setWindowTheme) {
    (*reinterpret_cast<const SetWindowThemeFunction*>(setWindowTheme))(window, L"Explorer",
                                                                       nullptr);
    return TRUE;
}

void SetControlThemes(HWND dialog, const Module& library) {
    const auto setTheme = FindExport<SetWindowThemeFunction>(library, "SetWindowTheme");
    if (setTheme != nullptr) {
        const auto parameter = reinterpret_cast<LPARAM>(&setTheme);
        SetExplorerTheme(dialog, parameter);
        EnumChildWindows(dialog, SetExplorerTheme, parameter);
    }
}

}  // namespace

bool IsLightAppTheme() {
    DWORD light = 1;
    DWORD size = sizeof(light);
    const LSTATUS result = RegGetValueW(
        HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
        L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &light, &size);
    return result != ERROR_SUCCESS || light != 0;
}

void ApplyTheme(HWND dialog, DialogTheme& theme) {
    const bool light = IsLightAppTheme();
    theme.textColour = light ? GetSysColor(COLOR_WINDOWTEXT) : DarkText;
    theme.brush.reset(CreateSolidBrush(light ? GetSysColor(COLOR_BTNFACE) : DarkBackground));
    SetTitleBarTheme(dialog, light);
    const Module uxtheme = LoadSystemLibrary(L"uxtheme.dll");
    if (!light) {
        AllowDarkMode(dialog, uxtheme);
    }
    SetControlThemes(dialog, uxtheme);
}

LONG FontHeight(int points, HDC dc) {
    constexpr int PointsPerInch = 72;
    return -MulDiv(points, GetDeviceCaps(dc, LOGPIXELSY), PointsPerInch);
}

Font CreateUiFont(int points) {
    const WindowDc screen(nullptr);
    return Font(CreateFontW(FontHeight(points, screen.get()), 0, 0, 0, FW_NORMAL, FALSE, FALSE,
                            FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                            CLEARTYPE_QUALITY, DEFAULT_PITCH | FF_DONTCARE, L"Segoe UI"));
}

HBRUSH ThemedCtlColor(HDC dc, const DialogTheme& theme) {
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, theme.textColour);
    return theme.brush ? theme.brush.get() : GetSysColorBrush(COLOR_BTNFACE);
}

bool EraseThemedBackground(HWND dialog, HDC dc, const DialogTheme& theme) {
    if (!theme.brush) {
        return false;
    }
    RECT client{};
    GetClientRect(dialog, &client);
    FillRect(dc, &client, theme.brush.get());
    return true;
}

void ReleaseTheme(DialogTheme& theme) {
    theme.font.reset();
    theme.brush.reset();
}

}  // namespace morvane
