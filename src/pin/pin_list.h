#pragma once

// What the settings file holds: the master switch and the ordered list of pins.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace morvane {

constexpr std::size_t MaxPinEntries = 100;
constexpr std::size_t MaxPatternLength = 512;  // UTF-16 code units
constexpr std::int32_t MaxMinSize = 8192;      // pixels, as a DPI-unaware program sees them

struct PinEntry {
    std::wstring pattern;        // title substring; compared without regard to ASCII case
    std::int32_t minWidth = 0;   // pixels of the outer frame; 0 = not enforced
    std::int32_t minHeight = 0;  // likewise
};

struct PinList {
    bool pinning = true;
    // The order is the file's order and the priority on the desktop: entry 0 ends on top.
    std::vector<PinEntry> entries;
};

}  // namespace morvane
