#pragma once

#include <vector>

#include "base/win.h"
#include "support/actor_protocol.h"

// The actor's windows. They belong to the main thread. The records about them outlive them and can
// be read from any thread, even while the main thread hangs.
namespace morvane::test {

// Null on failure. The new window's records start out empty.
[[nodiscard]] HWND CreateRecordedWindow(const WindowSpec& wanted);

[[nodiscard]] std::vector<PositionRequest> RecordedRequests(HWND window);
[[nodiscard]] std::vector<InputEvent> RecordedInput(HWND window);
void ForgetRecords(HWND window);

// A refusing window vetoes every change of its Z-order in WM_WINDOWPOSCHANGING.
void SetRefusing(HWND window, bool refusing);

// The window destroys itself inside the n-th WM_WINDOWPOSCHANGING from now; 0 disarms.
void SetDeathRequest(HWND window, long long n);

}  // namespace morvane::test
