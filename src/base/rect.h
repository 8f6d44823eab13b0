#pragma once

#include "base/win.h"

namespace morvane {

[[nodiscard]] constexpr LONG Width(const RECT& rect) {
    return rect.right - rect.left;
}

[[nodiscard]] constexpr LONG Height(const RECT& rect) {
    return rect.bottom - rect.top;
}

}  // namespace morvane
