#pragma once

// Faults on purpose, to see that each of the checks catches its kind.

#include <string_view>

namespace morvane::test {

// False if no fault has this name. Most never return: they crash.
bool PlantFault(std::wstring_view name);

}  // namespace morvane::test
