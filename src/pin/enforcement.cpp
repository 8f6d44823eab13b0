#include "pin/enforcement.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "base/rect.h"
#include "pin/discovery.h"
#include "pin/engine.h"
#include "pin/identity.h"
#include "pin/min_size.h"
#include "pin/settings_sync.h"
#include "pin/window_query.h"

namespace morvane {
namespace {

// No SWP_ASYNCWINDOWPOS: requests must take effect in the order they are sent. The price is that a
// hung window delays the pass.
constexpr UINT ZOrderOnly = SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE | SWP_SHOWWINDOW;
constexpr UINT SizeOnly = SWP_NOZORDER | SWP_NOACTIVATE | SWP_SHOWWINDOW;

void EnforceMinSize(HWND window, const PinEntry& entry) {
    if (IsWindow(window) == FALSE || IsIconic(window) != FALSE) {
        return;
    }
    const std::optional<RECT> frame = ReadFrame(window);
    if (!frame) {
        return;
    }
    const EnforcedSize size = ComputeEnforcedSize(Width(*frame), Height(*frame), entry);
    if (size.changed) {
        SetWindowPos(window, nullptr, frame->left, frame->top, size.width, size.height, SizeOnly);
    }
}

bool IsKnownTopmost(HWND window) {
    return Engine().pinnedWindows.contains(window) && IsWindow(window) != FALSE &&
           (GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
}

}  // namespace

bool ApplyAll() {
    ReloadSettings();
    if (!Engine().pinList.pinning) {
        ReleaseAll();
        return false;
    }
    PruneRemembered();
    std::vector<MatchedWindow> matched = CollectMatchedWindows();
    std::ranges::sort(matched, HasLowerPriority);
    bool raised = false;
    for (const MatchedWindow& match : matched) {
        // Forced: repeating the request restores the order after somebody raised a pinned window
        // of lower priority, or a topmost window of another program.
        raised |= ApplyToWindow(match.window, true);
    }
    return raised;
}

bool ApplyToWindow(HWND window, bool force) {
    if (IsWindow(window) == FALSE) {
        return false;
    }
    PinEngine& engine = Engine();
    const WindowTitle title = ReadTitle(window);
    if (const PinEntry* const entry = FindBestEntry(engine.pinList, title.View())) {
        EnforceMinSize(window, *entry);
    }
    // Even if the title no longer matches. A window that refuses is remembered too, and asked
    // again at the next pass.
    const bool mustRaise = force || !IsKnownTopmost(window);
    if (mustRaise) {
        SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, ZOrderOnly);
    }
    engine.pinnedWindows.insert(window);
    return mustRaise;
}

void ReleaseAll() {
    PinnedWindowSet& pinned = Engine().pinnedWindows;
    const PinnedWindowSet snapshot = pinned;
    for (const HWND window : snapshot) {
        if (IsWindow(window) != FALSE) {
            SetWindowPos(window, HWND_NOTOPMOST, 0, 0, 0, 0, ZOrderOnly);
            pinned.erase(window);
        }
    }
    pinned.clear();
}

void PruneRemembered() {
    // A forgotten window is sent nothing and keeps its topmost state: only a release makes windows
    // ordinary again.
    std::erase_if(Engine().pinnedWindows, [](HWND window) {
        return IsWindow(window) == FALSE || !IsEligibleWindow(window);
    });
}

}  // namespace morvane
