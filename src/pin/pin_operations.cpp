#include "pin/pin_operations.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "i18n/strings.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "pin/engine_binding.h"
#include "pin/identity.h"
#include "pin/min_size.h"
#include "pin/settings_sync.h"
#include "pin/window_query.h"
#include "settings/text.h"
#include "ui/tray_icon.h"

namespace morvane {

namespace {

bool IsListFull() {
    return Engine().pinList.entries.size() >= MaxPinEntries;
}

void AppendEntry(std::wstring_view title, std::int32_t minWidth, std::int32_t minHeight) {
    Engine().pinList.entries.push_back(
        {std::wstring(title.substr(0, MaxPatternLength)), minWidth, minHeight});
}

void Warn(StringId text) {
    ShowBalloon(GetText(StrAppName), GetText(text), BalloonWarning);
}

}  // namespace

void AddWindow(std::wstring_view title) {
    const std::vector<PinEntry>& entries = Engine().pinList.entries;
    // Silent also when the list is full: only the measuring command reports that.
    if (title.empty() || IsListFull() ||
        std::any_of(entries.begin(), entries.end(),
                    [&](const PinEntry& entry) { return PatternEquals(entry.pattern, title); })) {
        return;
    }
    AppendEntry(title, 0, 0);
    SaveSettingsIfBound();
}

// The window itself is not asked for anything: the pass that follows finds it by its title.
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
    // All of them, not only the removed entry's: a window may have been pinned by an entry that
    // identifies it no longer, and nothing remembers by which.
    ReleaseAll();
    ApplyAll();
}

void ToggleWindow(std::wstring_view title) {
    const std::int32_t index = FindBestEntryIndex(Engine().pinList, title);
    if (index == NoEntry) {
        AddWindow(title);
        ApplyAll();
    } else {
        // The entry that identifies the title, which may be a shorter pattern typed by hand and may
        // identify other windows as well.
        RemoveEntry(static_cast<std::size_t>(index));
    }
}

void PinWindowAtCurrentSize(HWND window) {
    const std::optional<RECT> frame = ReadMeasurableFrame(window);
    if (!frame) {
        Warn(StrSizeUnreadable);
        return;
    }
    const WindowTitle title = ReadTitle(window);
    if (title.length == 0) {
        Warn(StrTitleUnreadable);
        return;
    }
    // An entry that is there already can be measured again, also in a full list.
    if (IsListFull() && !IsPinnedTitle(Engine().pinList, title.View())) {
        Warn(StrLimitReached);
        return;
    }
    RefreshEngineBinding();
    AddWindowWithMinSize(window, Width(*frame), Height(*frame), title.View());
    // The measured size, also where a larger one than can be stored was cut. Accepted.
    ShowBalloon(GetText(StrAppName),
                FormatText(StrMinSizeSet, FormatSize(Width(*frame), Height(*frame))), BalloonInfo);
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
