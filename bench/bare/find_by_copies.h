#pragma once

// What identity is compared with: the rule in its plainest form.

#include <cstdint>
#include <string_view>

#include "pin/pin_list.h"

namespace morvane::bare {

// The entry that the title belongs to, by its index, or NoEntry. Both sides are copied and
// lower-cased for each comparison.
[[nodiscard]] std::int32_t FindByCopies(const PinList& list, std::wstring_view title);

}  // namespace morvane::bare
