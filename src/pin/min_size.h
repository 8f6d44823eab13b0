#pragma once

// The size rule. Pure functions of values, in pixels of the window's outer frame.

#include <cstdint>

#include "pin/pin_list.h"

namespace morvane {

struct EnforcedSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool changed = false;
};

// What may be stored as a minimum: below 1 gives 0 (not enforced), above MaxMinSize that value.
[[nodiscard]] std::int32_t ClampMinSize(std::int32_t value);

// The size that a window must have under an entry. Grows each dimension by itself, never shrinks.
[[nodiscard]] EnforcedSize ComputeEnforcedSize(std::int32_t width, std::int32_t height,
                                               const PinEntry& entry);

}  // namespace morvane
