#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/win.h"

namespace morvane::test {

// One call of Shell_NotifyIconW as it reached the taskbar.
struct TrayCall {
    DWORD message = 0;  // NIM_ADD, NIM_MODIFY, NIM_DELETE, ...
    HWND window = nullptr;
    UINT id = 0;
    UINT flags = 0;  // NIF_...
    UINT callbackMessage = 0;
    std::wstring tip;
    DWORD state = 0;
    DWORD stateMask = 0;
    std::wstring info;
    UINT timeout = 0;
    std::wstring infoTitle;
    DWORD infoFlags = 0;  // NIIF_...
    int iconWidth = 0;    // 0 without an icon; pixels
    int iconHeight = 0;
    std::uint64_t pictureHash = 0;  // of the icon's bits; 0 without an icon
    std::int64_t arrival = 0;       // QueryPerformanceCounter
    // What was found of the things that TrayRecorder::Watch names, at the arrival of the call and
    // before its answer.
    bool watchedWindowTopmost = false;
    bool watchedPathExists = false;
};

// Stands in for the taskbar of the session while it lives: programs that add, change or remove
// tray icons talk to it instead of the shell, which sees none of it. Works from a thread of its
// own, so that the test may block. Made for the form in which Wine 8 hands the calls on; cbSize
// and the GUID are not kept, and of the picture's bits only a hash. One at a time; throws
// std::runtime_error when the stand-in cannot be made.
class TrayRecorder {
public:
    TrayRecorder();
    TrayRecorder(const TrayRecorder&) = delete;
    TrayRecorder& operator=(const TrayRecorder&) = delete;
    TrayRecorder(TrayRecorder&&) = delete;
    TrayRecorder& operator=(TrayRecorder&&) = delete;
    ~TrayRecorder();

    // All calls so far, oldest first.
    [[nodiscard]] std::vector<TrayCall> Calls() const;
    void Forget();

    // The next calls fail: Shell_NotifyIconW returns FALSE. They are recorded all the same.
    void RefuseNext(int count);

    // From now on every call notes how this window and this path are when it comes.
    void Watch(HWND window, const std::wstring& path);

    struct Shared;

private:
    std::unique_ptr<Shared> shared_;
};

}  // namespace morvane::test
