#include "support/wait.h"

namespace morvane::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr DWORD PollMilliseconds = 5;

// Returns false once the thread has been told to quit.
bool HandleMessages(Messages messages) {
    MSG message{};
    if (messages == Messages::ServeSent) {
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
        return true;
    }
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        if (message.message == WM_QUIT) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return false;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return true;
}

// Sleeps until a message arrives or the next poll is due.
void Rest(Messages messages) {
    const DWORD wakeUp = messages == Messages::PumpAll ? QS_ALLINPUT : QS_SENDMESSAGE;
    MsgWaitForMultipleObjects(0, nullptr, FALSE, PollMilliseconds, wakeUp);
}

}  // namespace

bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout,
               Messages messages) {
    const Clock::time_point end = Clock::now() + timeout;
    while (Clock::now() < end) {
        if (condition()) {
            return true;
        }
        if (!HandleMessages(messages)) {
            break;
        }
        Rest(messages);
    }
    return condition();
}

bool WaitForObject(HANDLE object, std::chrono::milliseconds timeout) {
    return WaitUntil([object] { return WaitForSingleObject(object, 0) == WAIT_OBJECT_0; }, timeout);
}

}  // namespace morvane::test
