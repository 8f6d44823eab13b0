#pragma once

#include <string>

namespace morvane {

// The product version from the program's own version resource; "?" when it cannot be read.
[[nodiscard]] std::wstring GetProductVersion();

}  // namespace morvane
