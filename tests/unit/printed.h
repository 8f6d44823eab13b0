#pragma once

#include <string>
#include <string_view>

#include "pin/pin_list.h"

// Values as plain ASCII: what a failing case prints as its name, and what lists are compared by, so
// that a difference is readable. Different values never print alike.
namespace morvane::test {

// In quotes; everything outside printable ASCII by its number.
[[nodiscard]] std::string Printed(std::wstring_view text);
[[nodiscard]] std::string Printed(std::string_view bytes);

// The pattern and, behind it, "width x height".
[[nodiscard]] std::string Printed(const PinEntry& entry);

// The master switch, then one entry per line.
[[nodiscard]] std::string Printed(const PinList& list);

}  // namespace morvane::test
