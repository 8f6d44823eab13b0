#include "pin/enforcement.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <vector>

#include "pin/discovery.h"
#include "pin/engine.h"
#include "pin/identity.h"
#include "pin/min_size.h"
#include "pin/settings_sync.h"
#include "pin/window_query.h"

namespace morvane {

namespace {

// No SWP_ASYNCWINDOWPOS: requests must take effect in the order in which they are sent, at the
// price of waiting for a window that hangs.
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
    std::sort(matched.begin(), matched.end(), IsPinnedBefore);
    bool raised = false;
    for (const MatchedWindow& match : matched) {
        // Forced on every pass: this is what restores the order after somebody has raised a
        // window of lower priority, or its own topmost window.
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
    // Pinned also when the title matches no longer; and remembered also when the window refuses,
    // to be asked again at the next pass.
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
    PinnedWindowSet& pinned = Engine().pinnedWindows;
    for (auto it = pinned.begin(); it != pinned.end();) {
        // Deliberate: a forgotten window is sent nothing and keeps the topmost state that it has.
        // Only a release makes windows ordinary again.
        const bool keep = IsWindow(*it) != FALSE && IsEligibleWindow(*it);
        it = keep ? std::next(it) : pinned.erase(it);
    }
}

}  // namespace morvane
