#include "pin/identity.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstddef>
#include <string>

#include "settings/text.h"

namespace morvane {
namespace {

// A one-hash Bloom filter over the bigrams of a folded title. A clear bit proves that a bigram is
// not in the title; a set one proves nothing. It spares most patterns the search through the title,
// so that a pass with 100 patterns costs hardly more than one with a single pattern.
constexpr std::size_t PairBits = 2048;
using PairSketch = std::bitset<PairBits>;

std::size_t PairBit(wchar_t first, wchar_t second) {
    constexpr std::size_t Spread = 61;  // not 1, so that the order of the two counts
    return (first * Spread + second) % PairBits;
}

PairSketch SketchPairs(std::wstring_view folded) {
    PairSketch pairs;
    for (std::size_t at = 1; at < folded.size(); ++at) {
        pairs[PairBit(folded[at - 1], folded[at])] = true;
    }
    return pairs;
}

// False only when the title cannot contain the pattern; usually its first bigram tells.
bool MayContain(const PairSketch& pairs, std::wstring_view pattern) {
    wchar_t previous = FoldCase(pattern.front());
    for (const wchar_t unit : pattern.substr(1)) {
        const wchar_t folded = FoldCase(unit);
        if (!pairs[PairBit(previous, folded)]) {
            return false;
        }
        previous = folded;
    }
    return true;
}

bool ContainsFolded(std::wstring_view folded, std::wstring_view pattern) {
    const auto sameFolded = [](wchar_t titleUnit, wchar_t unit) {
        return titleUnit == FoldCase(unit);
    };
    return std::search(folded.begin(), folded.end(), pattern.begin(), pattern.end(), sameFolded) !=
           folded.end();
}

std::int32_t FindBestInFolded(const PinList& list, std::wstring_view folded) {
    const PairSketch pairs = SketchPairs(folded);
    std::int32_t best = NoEntry;
    std::size_t bestLength = 0;
    std::int32_t index = 0;
    for (const PinEntry& entry : list.entries) {
        const std::size_t length = entry.pattern.size();
        // The length first: a pattern that could not win need not be searched for.
        if (length > bestLength && length <= folded.size() && MayContain(pairs, entry.pattern) &&
            ContainsFolded(folded, entry.pattern)) {
            best = index;
            bestLength = length;
        }
        ++index;
    }
    return best;
}

}  // namespace

bool PatternEquals(std::wstring_view pattern, std::wstring_view title) {
    return EqualsIgnoreCase(pattern, title);
}

bool PatternMatches(std::wstring_view title, std::wstring_view pattern) {
    return pattern.empty() || !std::ranges::search(title, pattern, {}, FoldCase, FoldCase).empty();
}

std::int32_t FindBestEntryIndex(const PinList& list, std::wstring_view title) {
    // Folded once for all patterns. Titles fit this buffer; only a longer text is allocated.
    constexpr std::size_t UsualTitle = 512;
    std::array<wchar_t, UsualTitle> folded{};
    if (title.size() > folded.size()) {
        return FindBestInFolded(list, ToLowerCopy(title));
    }
    std::ranges::transform(title, folded.begin(), FoldCase);
    return FindBestInFolded(list, {folded.data(), title.size()});
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
