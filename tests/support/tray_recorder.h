#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/win.h"

namespace morvane::test {

// One call of Shell_NotifyIconW, as it was made.
struct TrayCall {
    DWORD message = 0;  // NIM_ADD, NIM_MODIFY, NIM_DELETE, ...
    DWORD size = 0;     // cbSize
    HWND window = nullptr;
    UINT id = 0;
    UINT flags = 0;  // NIF_...
    UINT callbackMessage = 0;
    HICON icon = nullptr;  // a handle of the calling process
    std::wstring tip;
    DWORD state = 0;
    DWORD stateMask = 0;
    std::wstring info;
    UINT timeout = 0;
    std::wstring infoTitle;
    DWORD infoFlags = 0;  // NIIF_...
    GUID item{};
    HICON balloonIcon = nullptr;
    // Whether what TrayRecorder::Watch names existed before the call was answered.
    bool watchedPathExists = false;
};

// Receives the tray calls of this process and of the program while it lives; none of them reaches
// the shell. It exchanges the import of this executable. The program as it is shipped cannot be
// watched: support/program.h starts morvane_faulty.exe in its place, which is made of the same
// object files and exchanges its import too. A program that runs already is not recorded. Answers
// on its own thread, so that the test may block. Only one at a time; throws std::runtime_error if
// it cannot be created.
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

    // Makes the next calls fail: Shell_NotifyIconW returns FALSE. They are still recorded.
    void RefuseNext(int count);

    // From now on every call records whether something exists at this path.
    void Watch(const std::wstring& path);

    struct Shared;

private:
    std::unique_ptr<Shared> shared_;
};

}  // namespace morvane::test
