#pragma once

// The icon in the notification area and its balloons, by which commands report.

#include <string>

#include "base/win.h"

namespace morvane {

// The icon's callback message: lParam is the mouse message itself.
constexpr UINT WM_TRAYICON = WM_APP + 1;

// The numbers are the shell's.
enum BalloonKind : DWORD {
    BalloonInfo = 1,
    BalloonWarning = 2,
};

// Adds the icon for the control window; with the system's application icon when the program's own
// is missing or refused. Without success the program runs on without an icon.
void AddTrayIcon(HWND controlWindow, HINSTANCE instance);

void RemoveTrayIcon();

// Shows one balloon. The title is cut to 63 units, the text to 255; refusal is not reported.
void ShowBalloon(const std::wstring& title, const std::wstring& text, BalloonKind kind);

}  // namespace morvane
