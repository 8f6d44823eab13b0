#pragma once

// Drives the running program faster than its own timer does, by posting the messages that the
// timer, the menu and the icon send.

#include <cstdint>

#include "base/win.h"
#include "support/program.h"

namespace morvane::test {

// Calls throw std::runtime_error if the program has ended or does not respond within a minute.
class PassDriver {
public:
    explicit PassDriver(const Program& program);

    // Runs this many passes and returns when the last one is over. The messages are posted: a sent
    // one would be served in the middle of a pass that waits for a window, and that pass would then
    // go on with outdated state.
    void RunPasses(int count);

    // Returns when everything posted before has been dispatched.
    void WaitForQueue();

    void RunCommand(WORD command);

    // These return when it has happened.
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
