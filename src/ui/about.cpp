#include "ui/about.h"

#include <string>
#include <string_view>

#include "base/rect.h"
#include "i18n/strings.h"
#include "ui/dialog_frame.h"
#include "ui/product_version.h"
#include "ui/raise.h"
#include "ui/theme.h"

namespace morvane {
namespace {

constexpr wchar_t AboutClass[] = L"MorvaneAboutDialog";
constexpr int BodyId = 100;
constexpr int CloseId = 101;
constexpr int FontPoints = 9;

// Pixels.
constexpr int DialogWidth = 420;
constexpr int FirstDialogHeight = 180;  // until the text has been measured
constexpr SIZE FirstControlSize = {100, 20};
constexpr int Margin = 16;
constexpr int ButtonHeight = 30;
constexpr int ButtonPadding = 28;
constexpr int TextSlack = 4;

constexpr DWORD DialogStyle = WS_VISIBLE | WS_CAPTION | WS_SYSMENU;
constexpr DWORD DialogExStyle = WS_EX_DLGMODALFRAME | WS_EX_TOPMOST;

bool isClassRegistered = false;

// Null unless a dialog exists: Windows reuses the handles of destroyed windows.
HWND openDialog = nullptr;

AboutDialogState* StateOf(HWND dialog) {
    return reinterpret_cast<AboutDialogState*>(GetWindowLongPtrW(dialog, GWLP_USERDATA));
}

std::wstring BodyText() {
    return std::wstring(GetText(StrAppName))
        .append(L"\n\n")
        .append(FormatText(StrAboutVersion, GetProductVersion()));
}

void CreateControl(HWND dialog, const wchar_t* windowClass, DWORD style, int id,
                   const wchar_t* text, HFONT font) {
    const HWND control = CreateWindowExW(0, windowClass, text, WS_CHILD | WS_VISIBLE | style, 0, 0,
                                         FirstControlSize.cx, FirstControlSize.cy, dialog,
                                         reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                                         GetModuleHandleW(nullptr), nullptr);
    SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
}

struct MeasuredTexts {
    int bodyHeight;
    int buttonTextWidth;
};

MeasuredTexts MeasureTexts(HWND dialog, const AboutDialogState& state, int textWidth) {
    const WindowDc dc(dialog);
    const SelectGuard selected(dc.get(), state.theme.font.get());
    RECT body{0, 0, textWidth, 0};
    DrawTextW(dc.get(), state.body.c_str(), -1, &body, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    const std::wstring_view close = GetText(StrClose);
    SIZE button{};
    GetTextExtentPoint32W(dc.get(), close.data(), static_cast<int>(close.size()), &button);
    return {Height(body), button.cx};
}

// From the top: margin, text, gap, button, margin. The height follows the text, the width stays.
void LayOut(HWND dialog, const AboutDialogState& state) {
    const HWND body = GetDlgItem(dialog, BodyId);
    const HWND button = GetDlgItem(dialog, CloseId);
    if (!state.theme.font || body == nullptr || button == nullptr) {
        return;
    }
    RECT client{};
    RECT frame{};
    GetClientRect(dialog, &client);
    GetWindowRect(dialog, &frame);
    const int textWidth = Width(client) - 2 * Margin;
    const MeasuredTexts texts = MeasureTexts(dialog, state, textWidth);
    const int buttonWidth = texts.buttonTextWidth + ButtonPadding;
    const int buttonTop = texts.bodyHeight + 2 * Margin;

    MoveWindow(body, Margin, Margin, textWidth, texts.bodyHeight + TextSlack, TRUE);
    MoveWindow(button, Width(client) - buttonWidth - Margin, buttonTop, buttonWidth, ButtonHeight,
               TRUE);
    const int frameHeight = Height(frame) - Height(client);
    SetWindowPos(dialog, nullptr, 0, 0, DialogWidth,
                 frameHeight + buttonTop + ButtonHeight + Margin,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    PositionNearTray(dialog, Margin);
}

LRESULT OnCreate(HWND dialog, LPARAM lParam) {
    const auto* const creation = reinterpret_cast<const CREATESTRUCTW*>(lParam);
    auto* const state = static_cast<AboutDialogState*>(creation->lpCreateParams);
    openDialog = dialog;
    SetWindowLongPtrW(dialog, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(state));
    state->theme.font = CreateUiFont(FontPoints);
    const HFONT font = state->theme.font.get();
    CreateControl(dialog, L"STATIC", SS_NOPREFIX, BodyId, state->body.c_str(), font);
    CreateControl(dialog, L"BUTTON", BS_DEFPUSHBUTTON, CloseId, GetText(StrClose), font);
    ApplyTheme(dialog, state->theme);
    LayOut(dialog, *state);
    return 0;
}

LRESULT OnClose(HWND dialog) {
    DestroyWindow(dialog);
    return 0;
}

// IsDialogMessageW turns Enter and Escape into IDOK and IDCANCEL.
LRESULT OnCommand(HWND dialog, WPARAM wParam, LPARAM lParam) {
    const int id = LOWORD(wParam);
    if (id != CloseId && id != IDOK && id != IDCANCEL) {
        return DefWindowProcW(dialog, WM_COMMAND, wParam, lParam);
    }
    return OnClose(dialog);
}

// The dialog gets the focus when it is activated; the keyboard needs it on the button.
LRESULT OnSetFocus(HWND dialog) {
    SetFocus(GetDlgItem(dialog, CloseId));
    return 0;
}

LRESULT OnCtlColor(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    const AboutDialogState* const state = StateOf(dialog);
    if (state == nullptr) {
        return DefWindowProcW(dialog, message, wParam, lParam);
    }
    return reinterpret_cast<LRESULT>(ThemedCtlColor(reinterpret_cast<HDC>(wParam), state->theme));
}

LRESULT OnEraseBackground(HWND dialog, WPARAM wParam, LPARAM lParam) {
    const AboutDialogState* const state = StateOf(dialog);
    if (state != nullptr &&
        EraseThemedBackground(dialog, reinterpret_cast<HDC>(wParam), state->theme)) {
        return 1;
    }
    return DefWindowProcW(dialog, WM_ERASEBKGND, wParam, lParam);
}

LRESULT OnDestroy(HWND dialog) {
    openDialog = nullptr;
    if (AboutDialogState* const state = StateOf(dialog)) {
        ReleaseTheme(state->theme);
    }
    return 0;
}

LRESULT CALLBACK AboutProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            return OnCreate(dialog, lParam);
        case WM_COMMAND:
            return OnCommand(dialog, wParam, lParam);
        case WM_CLOSE:
            return OnClose(dialog);
        case WM_SETFOCUS:
            return OnSetFocus(dialog);
        case WM_CTLCOLORSTATIC:
        case WM_CTLCOLORBTN:
            return OnCtlColor(dialog, message, wParam, lParam);
        case WM_ERASEBKGND:
            return OnEraseBackground(dialog, wParam, lParam);
        case WM_DESTROY:
            return OnDestroy(dialog);
        default:
            return DefWindowProcW(dialog, message, wParam, lParam);
    }
}

// Once per process; after a failure the next opening tries again.
void RegisterAboutClass() {
    if (isClassRegistered) {
        return;
    }
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = AboutProcedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.lpszClassName = AboutClass;
    isClassRegistered = RegisterClassW(&windowClass) != 0;
}

}  // namespace

void ShowAboutDialog(HWND owner) {
    if (openDialog != nullptr) {
        SetForegroundWindow(openDialog);
        return;
    }
    AboutDialogState state;
    state.body = BodyText();
    RegisterAboutClass();
    const HWND dialog =
        CreateWindowExW(DialogExStyle, AboutClass, GetText(StrAboutTitle), DialogStyle,
                        CW_USEDEFAULT, CW_USEDEFAULT, DialogWidth, FirstDialogHeight, owner,
                        nullptr, GetModuleHandleW(nullptr), &state);
    if (dialog == nullptr) {
        return;
    }
    RunModal(owner, dialog);
    // WM_QUIT ends the loop while the dialog still exists and needs the state above.
    if (openDialog == dialog) {
        DestroyWindow(dialog);
    }
}

void RaiseAboutDialog() {
    if (openDialog != nullptr) {
        RaiseOwnWindow(openDialog);
    }
}

}  // namespace morvane
