#pragma once

// The identity rule in its plainest form, for comparison.

#include <cstdint>
#include <string_view>

#include "pin/pin_list.h"

namespace morvane::bare {

// The index of the entry that the title belongs to, or NoEntry. Copies and lower-cases both sides
// for each comparison.
[[nodiscard]] std::int32_t FindByCopies(const PinList& list, std::wstring_view title);

}  // namespace morvane::bare
