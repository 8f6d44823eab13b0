#pragma once

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "base/process.h"
#include "base/owners.h"
#include "base/win.h"
#include "support/window_owner.h"

namespace morvane::test {

// Owns a window class of this program, by its name. All windows of the class have to go before it.
struct WindowClassTraits {
    using Handle = const wchar_t*;
    static Handle Empty() noexcept { return nullptr; }
    static void Close(Handle name) noexcept { UnregisterClassW(name, GetModuleHandleW(nullptr)); }
};
using WindowClassOwner = Owner<WindowClassTraits>;

// A control window for what the user interface needs of one: a message-only window that answers
// the messages about owner-drawn rows. One at a time.
class ControlStandIn {
public:
    // The class's name is that of the program's control window, unless there is a real one too.
    explicit ControlStandIn(const wchar_t* className = ControlWindowClass);
    ControlStandIn(const ControlStandIn&) = delete;
    ControlStandIn& operator=(const ControlStandIn&) = delete;
    ControlStandIn(ControlStandIn&&) = delete;
    ControlStandIn& operator=(ControlStandIn&&) = delete;
    ~ControlStandIn();

    [[nodiscard]] HWND Get() const { return window_.get(); }

    // Every few milliseconds a step is looked at; the next one's turn comes when it is true.
    using Step = std::function<bool()>;

    // Calls what blocks. Meanwhile it goes through the steps; after the last one, or when they
    // take too long (a failure), it calls finish until the blocking call returns.
    void Run(const std::function<void()>& blocking, std::vector<Step> steps,
             const std::function<void()>& finish);

    struct Message {
        UINT id = 0;
        WPARAM wParam = 0;
    };

    // What has arrived since the construction or the last Forget, oldest first; without the
    // timer of Run.
    [[nodiscard]] const std::vector<Message>& Messages() const { return messages_; }
    [[nodiscard]] std::size_t Count(UINT id) const;
    void Forget() { messages_.clear(); }

    // Calls the reaction whenever this message arrives. One message at a time.
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

// For Run, where something else is to end the blocking call: does nothing for some seconds, then it
// is a failure, and finish helps out.
[[nodiscard]] std::function<void()> InTheEnd(std::function<void()> finish);

}  // namespace morvane::test
