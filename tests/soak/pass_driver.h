#pragma once

// Makes the running program work faster than its own timer does, from outside: with the messages
// that the timer, the menu and the icon send.

#include <cstdint>

#include "base/win.h"
#include "support/program.h"

namespace morvane::test {

// Failing calls throw std::runtime_error: the program is gone, or does not answer in a minute.
class PassDriver {
public:
    explicit PassDriver(const Program& program);

    // Runs so many passes and returns when the last of them is over. They come from the message
    // loop, one after the other: a message that is sent would be served in the middle of a pass
    // that waits for a window, which would then go on with what it had found before.
    void RunPasses(int count);

    // Returns once everything posted before has been dispatched.
    void WaitForQueue();

    // Carries a menu command out.
    void RunCommand(WORD command);

    // Open and close; both return when that has happened.
    void OpenMenu();
    void CloseMenu();
    void OpenAbout();
    void CloseAbout();

    [[nodiscard]] std::uint64_t Passes() const { return passes_; }

private:
    [[nodiscard]] HWND OpenWindowOfClass(const wchar_t* className) const;
    void Mark(bool visible);

    const Program* program_;
    HWND control_;
    std::uint64_t passes_ = 0;
};

}  // namespace morvane::test
