#pragma once

#include <string>
#include <vector>

#include "base/win.h"
#include "support/actor_protocol.h"

// The actor's windows. They belong to the main thread. The records about them outlive them and can
// be read from any thread, even while the main thread hangs.
namespace morvane::test {

struct NewWindow {
    std::wstring className;  // registered on demand unless the system knows it ("#32770", "Edit")
    std::wstring title;
    DWORD style = 0;  // WS_VISIBLE is ignored here: see visible
    DWORD exStyle = 0;
    int x = 0;  // outer rectangle, screen pixels
    int y = 0;
    int width = 0;
    int height = 0;
    HWND owner = nullptr;
    bool visible = true;  // shown without being activated
    COLORREF colour = 0;  // of the client area
};

// Null on failure. The new window's records start out empty.
[[nodiscard]] HWND CreateRecordedWindow(const NewWindow& wanted);

[[nodiscard]] std::vector<PositionRequest> RecordedRequests(HWND window);
[[nodiscard]] std::vector<InputEvent> RecordedInput(HWND window);
void ForgetRecords(HWND window);

// A refusing window vetoes every change of its Z-order in WM_WINDOWPOSCHANGING.
void SetRefusing(HWND window, bool refusing);

// The window destroys itself inside the n-th WM_WINDOWPOSCHANGING from now; 0 disarms.
void SetDeathRequest(HWND window, long long n);

}  // namespace morvane::test
