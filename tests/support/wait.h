#pragma once

#include <chrono>
#include <functional>

#include "base/win.h"

namespace morvane::test {

inline constexpr std::chrono::milliseconds DefaultTimeout{10'000};

// What the waiting thread does with its own messages. A thread that owns windows and does neither
// blocks every program that sends one of them a message.
enum class Messages {
    ServeSent,  // answers messages sent by other threads, leaves the queue alone
    PumpAll,    // dispatches the queue too; a WM_QUIT ends the wait and stays posted
};

// Polls every few milliseconds until the condition holds, then returns true. After the timeout it
// checks one last time and returns the result.
[[nodiscard]] bool WaitUntil(const std::function<bool()>& condition,
                             std::chrono::milliseconds timeout = DefaultTimeout,
                             Messages messages = Messages::ServeSent);

// Waits for a process, event or other kernel object while serving sent messages.
[[nodiscard]] bool WaitForObject(HANDLE object, std::chrono::milliseconds timeout = DefaultTimeout);

}  // namespace morvane::test
