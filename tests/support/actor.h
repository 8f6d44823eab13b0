#pragma once

#include <chrono>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "base/owners.h"
#include "base/win.h"
#include "support/actor_protocol.h"
#include "support/wait.h"

namespace morvane::test {

// Owns a running window_actor.exe (MORVANE_TEST_ACTOR) and controls that process's windows. Every
// call returns once the actor has carried it out; if the actor answers with an error, or not at all
// within a minute, the call throws std::runtime_error with the command and the answer. The
// destructor ends the process, and all its windows with it.
class Actor {
public:
    Actor();
    Actor(Actor&&) noexcept = default;
    Actor& operator=(Actor&&) = delete;
    Actor(const Actor&) = delete;
    Actor& operator=(const Actor&) = delete;
    ~Actor();

    [[nodiscard]] HWND Create(const WindowSpec& spec);

    // The titles are spec.title followed by 0, 1, 2 and so on.
    [[nodiscard]] std::vector<HWND> CreateMany(int count, const WindowSpec& spec);

    void SetTitle(HWND window, std::wstring_view title);
    void Place(HWND window, int x, int y, int width, int height);
    void Show(HWND window, int showCommand);  // SW_...
    void Hide(HWND window) { Show(window, SW_HIDE); }
    void Minimise(HWND window);  // returns once the window is iconic
    void Restore(HWND window);   // returns once it no longer is
    void SetTopmost(HWND window, bool topmost);
    void Raise(HWND window);  // to the top of its band, without activating it
    void Destroy(HWND window);

    // False if the window does not become the foreground window within a few seconds.
    [[nodiscard]] bool BringToForeground(HWND window);

    // Returns at once; the main thread then answers nothing for that long.
    void Hang(std::chrono::milliseconds duration);

    // The window vetoes every change of its Z-order in WM_WINDOWPOSCHANGING.
    void Refuse(HWND window, bool refusing = true);

    // The owner is another window of the same actor, or null.
    void SetOwner(HWND window, HWND owner);

    // The window destroys itself inside the n-th WM_WINDOWPOSCHANGING from now.
    void DieOnRequest(HWND window, int n);

    // Since the window was created or its records were cleared; can be read for dead windows and
    // while the actor hangs. The test's own showing, minimising and reordering is recorded as well.
    [[nodiscard]] std::vector<PositionRequest> Requests(HWND window);
    [[nodiscard]] std::vector<InputEvent> Input(HWND window);
    void ForgetRecords(HWND window);

    // The windows in the order that their recorded topmost requests ask for: the last one asked
    // comes first. Only requests between two readings of the performance counter count.
    [[nodiscard]] std::vector<HWND> RequestedOrder(
        const std::vector<HWND>& windows, LONGLONG after = 0,
        LONGLONG before = std::numeric_limits<LONGLONG>::max());

    // Asks the actor to quit; false if it is still running after the timeout.
    [[nodiscard]] bool Quit(std::chrono::milliseconds timeout = DefaultTimeout);
    [[nodiscard]] DWORD ProcessId() const { return processId_; }

private:
    // False if the process does not start or does not answer.
    [[nodiscard]] bool Start();
    void End();
    [[nodiscard]] bool Send(const std::string& command);
    std::string Ask(const std::string& command);
    std::string ReadAnswer(std::chrono::milliseconds timeout);

    KernelHandle process_;
    DWORD processId_ = 0;
    FileHandle toActor_;
    FileHandle fromActor_;
    std::string received_;
};

}  // namespace morvane::test
