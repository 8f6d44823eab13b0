#include "pin/identity.h"

#include <algorithm>

#include "settings/text.h"

namespace morvane {

bool PatternEquals(std::wstring_view pattern, std::wstring_view title) {
    return EqualsIgnoreCase(pattern, title);
}

bool PatternMatches(std::wstring_view title, std::wstring_view pattern) {
    if (pattern.empty()) {
        return true;
    }
    const auto sameFolded = [](wchar_t a, wchar_t b) { return FoldCase(a) == FoldCase(b); };
    return std::search(title.begin(), title.end(), pattern.begin(), pattern.end(), sameFolded) !=
           title.end();
}

std::int32_t FindBestEntryIndex(const PinList& list, std::wstring_view title) {
    std::int32_t best = NoEntry;
    std::size_t bestLength = 0;
    std::int32_t index = 0;
    for (const PinEntry& entry : list.entries) {
        // The length is asked first: a pattern that could not win need not be searched for.
        if (entry.pattern.size() > bestLength && PatternMatches(title, entry.pattern)) {
            best = index;
            bestLength = entry.pattern.size();
        }
        ++index;
    }
    return best;
}

const PinEntry* FindBestEntry(const PinList& list, std::wstring_view title) {
    const std::int32_t index = FindBestEntryIndex(list, title);
    return index == NoEntry ? nullptr : &list.entries[static_cast<std::size_t>(index)];
}

bool IsPinnedTitle(const PinList& list, std::wstring_view title) {
    return FindBestEntryIndex(list, title) != NoEntry;
}

PinState PinStateForTitle(const PinList& list, std::wstring_view title) {
    const PinEntry* const entry = FindBestEntry(list, title);
    if (entry == nullptr) {
        return PinState::NotPinned;
    }
    return entry->minWidth > 0 || entry->minHeight > 0 ? PinState::PinnedWithMinSize
                                                       : PinState::Pinned;
}

}  // namespace morvane
