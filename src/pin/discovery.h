#pragma once

// Which windows of other programs a pass works on.

#include <cstdint>
#include <string_view>
#include <vector>

#include "base/win.h"

namespace morvane {

struct MatchedWindow {
    HWND window = nullptr;
    std::int32_t entryIndex = 0;
};

// The order of a pass, lowest priority first, because each topmost request puts its window above
// all earlier ones: by descending entry index, then by ascending handle as an unsigned number.
[[nodiscard]] bool HasLowerPriority(const MatchedWindow& a, const MatchedWindow& b);

// The control window, or any window of the engine's own class. className is the window's.
[[nodiscard]] bool IsOwnWindow(HWND window, std::wstring_view className);

// The system's own security dialogs are never pinned, whatever the patterns say.
[[nodiscard]] bool IsProtectedSystemDialog(std::wstring_view title, std::wstring_view className);

// Whether a pass may touch the window: visible, without owner, not ours, titled, not protected,
// identified by an entry.
[[nodiscard]] bool IsEligibleWindow(HWND window);

// The eligible windows of the desktop, in enumeration order (topmost first).
[[nodiscard]] std::vector<MatchedWindow> CollectMatchedWindows();

}  // namespace morvane
