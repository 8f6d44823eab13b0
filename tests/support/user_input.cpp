#include "support/user_input.h"

#include <array>
#include <stdexcept>
#include <string>

#include "support/unix_command.h"
#include "support/wait.h"

namespace morvane::test {
namespace {

constexpr LONG AsidePixels = 3;

void RunPointerTool(const std::string& operands) {
    const UnixResult result = RunUnix("xdotool " + operands);
    if (result.exitCode != 0) {
        throw std::runtime_error("xdotool " + operands + ": " + result.output);
    }
}

std::string MoveWords(POINT to) {
    return "mousemove " + std::to_string(to.x) + " " + std::to_string(to.y);
}

const char* ButtonNumber(MouseButton button) {
    return button == MouseButton::Left ? "1" : "3";
}

void WaitForPointer(POINT at) {
    const bool arrived = WaitUntil([at] {
        POINT now{};
        return GetCursorPos(&now) != FALSE && now.x == at.x && now.y == at.y;
    });
    if (!arrived) {
        throw std::runtime_error("the pointer did not arrive");
    }
}

}  // namespace

void MovePointer(POINT to) {
    RunPointerTool(MoveWords(to));
    WaitForPointer(to);
}

void PressButton(MouseButton button) {
    RunPointerTool(std::string("mousedown ") + ButtonNumber(button));
}

void ReleaseButton(MouseButton button) {
    RunPointerTool(std::string("mouseup ") + ButtonNumber(button));
}

void Click(POINT at, MouseButton button) {
    RunPointerTool(MoveWords({at.x - AsidePixels, at.y - AsidePixels}));
    MovePointer(at);
    RunPointerTool(std::string("click ") + ButtonNumber(button));
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
