#include "ui/tray_icon.h"

#include <iterator>

#include "base/win_shell.h"
#include "i18n/strings.h"
#include "res/resource_ids.h"

namespace morvane {
namespace {

constexpr UINT TrayIconId = 1;

// Filled when the icon is added, unchanged until it is removed.
NOTIFYICONDATAW trayIconData;

HICON SystemApplicationIcon() {
    return LoadIconW(nullptr, IDI_APPLICATION);
}

// Cut to what the field holds with its terminator.
template <std::size_t Size>
void CopyText(wchar_t (&field)[Size], const wchar_t* text) {
    lstrcpynW(field, text, static_cast<int>(Size));
}

static_assert(BalloonInfo == NIIF_INFO && BalloonWarning == NIIF_WARNING);

}  // namespace

void AddTrayIcon(HWND controlWindow, HINSTANCE instance) {
    trayIconData = NOTIFYICONDATAW{};
    trayIconData.cbSize = sizeof(trayIconData);
    trayIconData.hWnd = controlWindow;
    trayIconData.uID = TrayIconId;
    trayIconData.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    trayIconData.uCallbackMessage = WM_TRAYICON;
    // A shared icon, which nobody has to destroy. The shell scales it to its task bar.
    trayIconData.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(IDI_MORVANE));
    if (trayIconData.hIcon == nullptr) {
        trayIconData.hIcon = SystemApplicationIcon();
    }
    CopyText(trayIconData.szTip, GetText(StrAppName));
    // No NIM_SETVERSION: the classic callback form is the one that the control window reads.
    if (Shell_NotifyIconW(NIM_ADD, &trayIconData) == FALSE) {
        trayIconData.hIcon = SystemApplicationIcon();
        Shell_NotifyIconW(NIM_ADD, &trayIconData);
    }
}

void RemoveTrayIcon() {
    Shell_NotifyIconW(NIM_DELETE, &trayIconData);
}

void ShowBalloon(const std::wstring& title, const std::wstring& text, BalloonKind kind) {
    // A copy with NIF_INFO alone: the icon and its tooltip stay as they are.
    NOTIFYICONDATAW balloon = trayIconData;
    balloon.uFlags = NIF_INFO;
    balloon.dwInfoFlags = kind;
    CopyText(balloon.szInfoTitle, title.c_str());
    CopyText(balloon.szInfo, text.c_str());
    Shell_NotifyIconW(NIM_MODIFY, &balloon);
}

}  // namespace morvane
