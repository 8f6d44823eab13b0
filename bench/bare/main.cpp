// The smallest program of its kind: a class, a message-only window and an icon, until WM_CLOSE.
// With arguments, the handles of windows, it is also the bare loop: twice a second it makes the
// calls of a pass that pins these windows.

#include <array>
#include <cwchar>
#include <span>

#include "bare/loops.h"
#include "base/win.h"
#include "base/win_shell.h"

namespace {

constexpr wchar_t BareClass[] = L"MorvaneBareWindow";
constexpr UINT PassPeriod = 500;  // milliseconds, as in the program
constexpr UINT_PTR PassTimer = 1;
constexpr UINT IconMessage = WM_APP + 1;
constexpr std::size_t MaxPinned = 100;

struct BareState {
    NOTIFYICONDATAW icon{};
    std::array<HWND, MaxPinned> windows{};
    std::size_t count = 0;
};

BareState state;

LRESULT CALLBACK BareProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_TIMER) {
        morvane::bare::LookAtAndPin(std::span(state.windows).first(state.count));
        return 0;
    }
    if (message == WM_DESTROY) {
        Shell_NotifyIconW(NIM_DELETE, &state.icon);
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void AddIcon(HWND window) {
    state.icon.cbSize = sizeof(state.icon);
    state.icon.hWnd = window;
    state.icon.uID = 1;
    state.icon.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    state.icon.uCallbackMessage = IconMessage;
    state.icon.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
    lstrcpynW(state.icon.szTip, L"Bare", static_cast<int>(std::size(state.icon.szTip)));
    Shell_NotifyIconW(NIM_ADD, &state.icon);
}

void ReadHandles(const wchar_t* text) {
    constexpr int Decimal = 10;
    wchar_t* rest = nullptr;
    while (const std::uintptr_t handle = std::wcstoull(text, &rest, Decimal)) {
        state.windows[state.count++] = reinterpret_cast<HWND>(handle);
        text = rest;
    }
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE /*previous*/, PWSTR arguments, int /*show*/) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = BareProcedure;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = BareClass;
    RegisterClassW(&windowClass);
    const HWND window =
        CreateWindowExW(0, BareClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, instance, nullptr);
    if (window == nullptr) {
        return 1;
    }
    ReadHandles(arguments);
    if (state.count > 0) {
        SetTimer(window, PassTimer, PassPeriod, nullptr);
    }
    AddIcon(window);
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
