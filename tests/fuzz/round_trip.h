#pragma once

// What happens to a list when it is written and read back.

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "pin/pin_list.h"

namespace morvane::test {

// The format has no escape, so entries of these kinds do not survive a round trip. Files can
// produce the first four (a pattern that was cut, or that came before "0 0"); the others come only
// from window titles.
enum class Unstable : std::uint8_t {
    Comment,     // begins with "#": gone
    OuterSpace,  // white space at an end: trimmed; only white space: gone
    BrokenPair,  // half a surrogate pair: becomes U+FFFD
    SizeLike,    // no size, and ends in two numbers: they become its size
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

// Why the entry does not survive; empty if it does.
[[nodiscard]] std::optional<Unstable> WhyUnstable(const PinEntry& entry);

}  // namespace morvane::test
