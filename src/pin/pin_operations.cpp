#include "pin/pin_operations.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "pin/enforcement.h"
#include "pin/engine.h"
#include "pin/identity.h"
#include "pin/min_size.h"
#include "pin/settings_sync.h"

namespace morvane {
namespace {

bool IsListFull() {
    return Engine().pinList.entries.size() >= MaxPinEntries;
}

void AppendEntry(std::wstring_view title, std::int32_t minWidth, std::int32_t minHeight) {
    Engine().pinList.entries.push_back(
        {std::wstring(title.substr(0, MaxPatternLength)), minWidth, minHeight});
}

}  // namespace

void AddWindow(std::wstring_view title) {
    const std::vector<PinEntry>& entries = Engine().pinList.entries;
    // Silent also when the list is full: only the measuring command reports that.
    if (title.empty() || IsListFull() || std::ranges::any_of(entries, [&](const PinEntry& entry) {
            return PatternEquals(entry.pattern, title);
        })) {
        return;
    }
    AppendEntry(title, 0, 0);
    SaveSettingsIfBound();
}

bool HasRoomFor(std::wstring_view title) {
    return !IsListFull() || IsPinnedTitle(Engine().pinList, title);
}

// The window is not needed: the pass finds it by its title.
void AddWindowWithMinSize(HWND /*window*/, std::int32_t width, std::int32_t height,
                          std::wstring_view title) {
    PinList& list = Engine().pinList;
    const std::int32_t index = FindBestEntryIndex(list, title);
    if (index != NoEntry) {
        PinEntry& entry = list.entries[static_cast<std::size_t>(index)];
        entry.minWidth = ClampMinSize(width);
        entry.minHeight = ClampMinSize(height);
    } else if (IsListFull()) {
        return;
    } else {
        AppendEntry(title, ClampMinSize(width), ClampMinSize(height));
    }
    SaveSettingsIfBound();
    ApplyAll();
}

void RemoveEntry(std::size_t index) {
    std::vector<PinEntry>& entries = Engine().pinList.entries;
    if (index >= entries.size()) {
        return;
    }
    entries.erase(std::next(entries.begin(), static_cast<std::ptrdiff_t>(index)));
    SaveSettingsIfBound();
    // All windows, because nothing remembers which entry pinned which. The pass pins the rest
    // again.
    ReleaseAll();
    ApplyAll();
}

void ToggleWindow(std::wstring_view title) {
    const std::int32_t index = FindBestEntryIndex(Engine().pinList, title);
    if (index == NoEntry) {
        AddWindow(title);
        ApplyAll();
    } else {
        // May be a shorter pattern, typed by hand, that identifies other windows too.
        RemoveEntry(static_cast<std::size_t>(index));
    }
}

void SetPinning(bool on) {
    Engine().pinList.pinning = on;
    SaveSettingsIfBound();
    if (on) {
        ApplyAll();
    } else {
        ReleaseAll();
    }
}

}  // namespace morvane
