#pragma once

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "base/owners.h"
#include "base/process.h"
#include "base/win.h"
#include "support/window_owner.h"

namespace morvane::test {

// Owns a window class of this program, by name. All its windows must be destroyed first.
struct WindowClassTraits {
    using Handle = const wchar_t*;
    static Handle Empty() noexcept { return nullptr; }
    static void Close(Handle name) noexcept { UnregisterClassW(name, GetModuleHandleW(nullptr)); }
};
using WindowClassOwner = Owner<WindowClassTraits>;

// Stands in for the control window in user interface tests: a message-only window that answers the
// messages about owner-drawn rows. Only one at a time.
class ControlStandIn {
public:
    // Takes the class name of the program's control window; a test with a real one passes another.
    explicit ControlStandIn(const wchar_t* className = ControlWindowClass);
    ControlStandIn(const ControlStandIn&) = delete;
    ControlStandIn& operator=(const ControlStandIn&) = delete;
    ControlStandIn(ControlStandIn&&) = delete;
    ControlStandIn& operator=(ControlStandIn&&) = delete;
    ~ControlStandIn();

    [[nodiscard]] HWND Get() const { return window_.get(); }

    // A step is polled every few milliseconds until it returns true; then the next one follows.
    using Step = std::function<bool()>;

    // Makes a blocking call and runs the steps meanwhile. After the last one, or if they take too
    // long (a failure), calls finish until the blocking call returns.
    void Run(const std::function<void()>& blocking, std::vector<Step> steps,
             const std::function<void()>& finish);

    struct Message {
        UINT id = 0;
        WPARAM wParam = 0;
    };

    // Messages since construction or the last Forget, oldest first, without the timer of Run.
    [[nodiscard]] const std::vector<Message>& Messages() const { return messages_; }
    [[nodiscard]] std::size_t Count(UINT id) const;
    void Forget() { messages_.clear(); }

    // Calls the reaction whenever this message arrives. Only one message at a time.
    void On(UINT message, std::function<void()> reaction) {
        awaited_ = message;
        reaction_ = std::move(reaction);
    }

    // Dispatches what is in the thread's queue.
    static void Pump();

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void Walk();

    WindowClassOwner class_;
    WindowOwner window_;
    std::vector<Message> messages_;
    std::vector<Step> steps_;
    std::function<void()> finish_;
    UINT awaited_ = 0;
    std::function<void()> reaction_;
    std::size_t done_ = 0;
    ULONGLONG deadline_ = 0;
    bool walking_ = false;
};

// A finish for Run when something else is expected to end the blocking call: does nothing for some
// seconds, then reports a failure and calls the given finish.
[[nodiscard]] std::function<void()> InTheEnd(std::function<void()> finish);

}  // namespace morvane::test
