#pragma once

#include <string>
#include <string_view>

#include "pin/pin_list.h"

// Values as plain ASCII, to name failing cases and to compare lists with readable differences.
// Different values never print alike.
namespace morvane::test {

// Quoted; units outside printable ASCII as numbers.
[[nodiscard]] std::string Printed(std::wstring_view text);
[[nodiscard]] std::string Printed(std::string_view bytes);

// The pattern, followed by "width x height".
[[nodiscard]] std::string Printed(const PinEntry& entry);

// The master switch, then one entry per line.
[[nodiscard]] std::string Printed(const PinList& list);

}  // namespace morvane::test
