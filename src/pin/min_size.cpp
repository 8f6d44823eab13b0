#include "pin/min_size.h"

#include <algorithm>

namespace morvane {

std::int32_t ClampMinSize(std::int32_t value) {
    return std::clamp(value, std::int32_t{0}, MaxMinSize);
}

EnforcedSize ComputeEnforcedSize(std::int32_t width, std::int32_t height, const PinEntry& entry) {
    EnforcedSize size{width, height, false};
    if (entry.minWidth >= 1 && width < entry.minWidth) {
        size.width = entry.minWidth;
        size.changed = true;
    }
    if (entry.minHeight >= 1 && height < entry.minHeight) {
        size.height = entry.minHeight;
        size.changed = true;
    }
    return size;
}

}  // namespace morvane
