#pragma once

// What a list becomes when it is written and read again.

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "pin/pin_list.h"

namespace morvane::test {

// The format has no escape: entries of these kinds do not come back as they were written. The
// first four also come out of a file (a pattern that was cut, or that stood before "0 0"); the
// others only come of a title that the menu takes in.
enum class Unstable : std::uint8_t {
    Comment,     // begins with "#": gone
    OuterSpace,  // white space at an end: trimmed; a pattern of nothing else: gone
    BrokenPair,  // half a surrogate pair: replaced by U+FFFD
    SizeLike,    // no size, and ends in two numbers: they become one
    SwitchLike,  // reads as a master switch: sets it
    LineFeed,    // falls apart into several lines
};
constexpr int UnstableKinds = 6;
constexpr std::array<std::string_view, UnstableKinds> UnstableNames = {
    "begins with #",       "white space at an end",      "half a surrogate pair",
    "ends in two numbers", "reads as the master switch", "holds a line feed",
};

[[nodiscard]] constexpr bool ComesFromFiles(Unstable kind) {
    return kind <= Unstable::SizeLike;
}

// None for an entry that every reading gives back.
[[nodiscard]] std::optional<Unstable> WhyUnstable(const PinEntry& entry);

}  // namespace morvane::test
