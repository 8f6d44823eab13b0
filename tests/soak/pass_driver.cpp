#include "soak/pass_driver.h"

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>

#include "support/window_state.h"

namespace morvane::test {
namespace {

constexpr UINT_PTR PassTimer = 1;
constexpr UINT TrayMessage = WM_APP + 1;
constexpr WORD AboutCommand = 1009;
constexpr wchar_t MenuClass[] = L"#32768";
constexpr wchar_t AboutClass[] = L"MorvaneAboutDialog";

constexpr std::chrono::minutes Patience{1};
constexpr int BusyPolls = 5;

void Post(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (PostMessageW(window, message, wParam, lParam) == FALSE) {
        throw std::runtime_error("cannot post a message to the program");
    }
}

void Await(const char* what, const std::function<bool()>& condition) {
    if (!WaitUntil(condition, Patience)) {
        throw std::runtime_error(what);
    }
}

}  // namespace

PassDriver::PassDriver(const Program& program)
    : program_(&program), control_(program.WaitForControlWindow()) {
    if (control_ == nullptr) {
        throw std::runtime_error("the program has no control window");
    }
}

void PassDriver::RunPasses(int count) {
    for (int pass = 0; pass < count; ++pass) {
        Post(control_, WM_TIMER, PassTimer, 0);
        ++passes_;
    }
    WaitForQueue();
}

// Uses the control window's visible bit as a marker. The message that sets it queues up behind
// everything posted before, and reading the bit needs no message, which could be served in the
// middle of a pass. A message-only window is never shown, and the bit is cleared at once.
void PassDriver::WaitForQueue() {
    Mark(true);
    Mark(false);
}

void PassDriver::Mark(bool visible) {
    Post(control_, WM_SETREDRAW, visible ? TRUE : FALSE, 0);
    const auto end = std::chrono::steady_clock::now() + Patience;
    for (int poll = 0;
         (GetWindowLongW(control_, GWL_STYLE) & WS_VISIBLE) != (visible ? WS_VISIBLE : 0); ++poll) {
        if (!program_->IsRunning()) {
            throw std::runtime_error("the program has ended");
        }
        if (std::chrono::steady_clock::now() > end) {
            throw std::runtime_error("the program does not answer");
        }
        // An idle program answers within the first few polls.
        Sleep(poll < BusyPolls ? 0 : 1);
    }
}

void PassDriver::RunCommand(WORD command) {
    Post(control_, WM_COMMAND, command, 0);
    WaitForQueue();
}

HWND PassDriver::OpenWindowOfClass(const wchar_t* className) const {
    return HighestWindowOfClass(className, program_->ProcessId());
}

void PassDriver::OpenMenu() {
    Post(control_, TrayMessage, 1, WM_LBUTTONUP);
    Await("the menu does not open", [&] { return OpenWindowOfClass(MenuClass) != nullptr; });
}

void PassDriver::CloseMenu() {
    // Posted to the window, as the keyboard focus may be elsewhere.
    Post(control_, WM_KEYDOWN, VK_ESCAPE, 0);
    Await("the menu does not close", [&] { return OpenWindowOfClass(MenuClass) == nullptr; });
    WaitForQueue();
}

void PassDriver::OpenAbout() {
    Post(control_, WM_COMMAND, AboutCommand, 0);
    Await("About does not open", [&] { return OpenWindowOfClass(AboutClass) != nullptr; });
}

void PassDriver::CloseAbout() {
    Post(OpenWindowOfClass(AboutClass), WM_CLOSE, 0, 0);
    Await("About does not close", [&] { return OpenWindowOfClass(AboutClass) == nullptr; });
    WaitForQueue();
}

}  // namespace morvane::test
