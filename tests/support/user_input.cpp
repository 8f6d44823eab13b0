#include "support/user_input.h"

#include <array>
#include <iostream>
#include <stdexcept>

#include "support/screen.h"

namespace morvane::test {
namespace {

constexpr LONG AsidePixels = 3;

void SendMouse(DWORD flags, LONG x = 0, LONG y = 0) {
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dx = x;
    input.mi.dy = y;
    input.mi.dwFlags = flags;
    if (SendInput(1, &input, sizeof(input)) != 1) {
        throw std::runtime_error("the mouse was not accepted");
    }
}

// The screen's width and height are 65536 units of input; the middle of a pixel is in that pixel
// whichever way the system rounds.
LONG PixelCentre(LONG pixel, int firstMetric, int sizeMetric) {
    constexpr LONG Units = 65'536;
    const LONG first = GetSystemMetrics(firstMetric);
    return MulDiv(2 * (pixel - first) + 1, Units, 2 * GetSystemMetrics(sizeMetric));
}

// Moves the pointer and, in the same step, presses or releases a button.
void SendPointer(POINT to, DWORD button = 0) {
    SendMouse(MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE | MOUSEEVENTF_VIRTUALDESK | button,
              PixelCentre(to.x, SM_XVIRTUALSCREEN, SM_CXVIRTUALSCREEN),
              PixelCentre(to.y, SM_YVIRTUALSCREEN, SM_CYVIRTUALSCREEN));
}

DWORD PressOf(MouseButton button) {
    return button == MouseButton::Left ? MOUSEEVENTF_LEFTDOWN : MOUSEEVENTF_RIGHTDOWN;
}

DWORD ReleaseOf(MouseButton button) {
    return button == MouseButton::Left ? MOUSEEVENTF_LEFTUP : MOUSEEVENTF_RIGHTUP;
}

bool PointerIsAt(POINT at) {
    POINT now{};
    return GetCursorPos(&now) != FALSE && now.x == at.x && now.y == at.y;
}

// Where a display server keeps the pointer, it is moved too, and reports that to the window below:
// a second move to the same place, which comes in a moment and may undo a newer one. Two answers of
// the server show that it has reported, two of the window that it has listened. Elsewhere they are
// there at once.
void LetMoveSettle(POINT at) {
    constexpr UINT PatienceMilliseconds = 1'000;  // the window may hang
    for (int round = 0; round < 2; ++round) {
        static_cast<void>(PixelAt(at));
    }
    for (int round = 0; round < 2; ++round) {
        SendMessageTimeoutW(WindowFromPoint(at), WM_NULL, 0, 0, SMTO_ABORTIFHUNG,
                            PatienceMilliseconds, nullptr);
    }
}

}  // namespace

void MovePointer(POINT to) {
    constexpr int Attempts = 3;
    for (int attempt = 1; attempt <= Attempts; ++attempt) {
        SendPointer(to);
        LetMoveSettle(to);
        // At once: if it was moved back, it will not stay where it arrives later.
        if (PointerIsAt(to)) {
            return;
        }
        std::cout << "measured: the pointer was moved back, attempt " << attempt << '\n';
    }
    throw std::runtime_error("the pointer did not arrive");
}

void PressButton(MouseButton button) {
    SendMouse(PressOf(button));
}

void ReleaseButton(MouseButton button) {
    SendMouse(ReleaseOf(button));
}

void Click(POINT at, MouseButton button) {
    MovePointer({at.x - AsidePixels, at.y - AsidePixels});
    MovePointer(at);
    SendPointer(at, PressOf(button));
    SendPointer(at, ReleaseOf(button));
}

void TapKey(WORD virtualKey) {
    std::array<INPUT, 2> keys{};
    for (INPUT& key : keys) {
        key.type = INPUT_KEYBOARD;
        key.ki.wVk = virtualKey;
    }
    keys[1].ki.dwFlags = KEYEVENTF_KEYUP;
    if (SendInput(static_cast<UINT>(keys.size()), keys.data(), sizeof(INPUT)) != keys.size()) {
        throw std::runtime_error("the key was not accepted");
    }
}

}  // namespace morvane::test
