#include "ui/dialog_frame.h"

#include "base/rect.h"

namespace morvane {

void PositionNearTray(HWND window, int margin) {
    RECT frame{};
    RECT workArea{};
    // Fails for null as for any other handle without a window.
    if (GetWindowRect(window, &frame) == FALSE ||
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &workArea, 0) == FALSE) {
        return;
    }
    // Always this corner, wherever the task bar is: About opens in one predictable place.
    const LONG x = workArea.right - Width(frame) - margin;
    const LONG y = workArea.bottom - Height(frame) - margin;
    SetWindowPos(window, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void RunModal(HWND owner, HWND dialog) {
    EnableWindow(owner, FALSE);
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (IsDialogMessageW(dialog, &message) == FALSE) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        if (IsWindow(dialog) == FALSE) {
            break;
        }
    }
    EnableWindow(owner, TRUE);
    SetForegroundWindow(owner);
}

}  // namespace morvane
