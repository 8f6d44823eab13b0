#include "support/user_input.h"

#include <array>
#include <stdexcept>

#include "support/wait.h"

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

}  // namespace

void MovePointer(POINT to) {
    SendPointer(to);
    // A late report of the place before may take it back.
    const bool arrived = WaitUntil([to] {
        POINT now{};
        if (GetCursorPos(&now) != FALSE && now.x == to.x && now.y == to.y) {
            return true;
        }
        SendPointer(to);
        return false;
    });
    if (!arrived) {
        throw std::runtime_error("the pointer did not arrive");
    }
}

void PressButton(MouseButton button) {
    SendMouse(PressOf(button));
}

void ReleaseButton(MouseButton button) {
    SendMouse(ReleaseOf(button));
}

void Click(POINT at, MouseButton button) {
    SendPointer({at.x - AsidePixels, at.y - AsidePixels});
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
