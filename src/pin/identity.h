#pragma once

// Window identity: which entry of a list a window title belongs to. Pure functions.

#include <cstdint>
#include <string_view>

#include "pin/pin_list.h"

namespace morvane {

// What the menu's check marks show.
enum class PinState : std::uint32_t {
    NotPinned = 0,
    Pinned = 1,
    PinnedWithMinSize = 2,
};

constexpr std::int32_t NoEntry = -1;

// Equal without regard to ASCII case; two empty texts are equal.
[[nodiscard]] bool PatternEquals(std::wstring_view pattern, std::wstring_view title);

// True when the title contains the pattern, without regard to ASCII case; an empty pattern
// matches every title.
[[nodiscard]] bool PatternMatches(std::wstring_view title, std::wstring_view pattern);

// The index of the entry with the longest pattern that the title contains, the earliest among
// equally long ones; NoEntry when there is none. An empty pattern is never chosen.
[[nodiscard]] std::int32_t FindBestEntryIndex(const PinList& list, std::wstring_view title);

// The same entry, or null. Valid until the list changes.
[[nodiscard]] const PinEntry* FindBestEntry(const PinList& list, std::wstring_view title);

[[nodiscard]] bool IsPinnedTitle(const PinList& list, std::wstring_view title);
[[nodiscard]] PinState PinStateForTitle(const PinList& list, std::wstring_view title);

}  // namespace morvane
