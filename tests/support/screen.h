#pragma once

#include <optional>
#include <vector>

#include "base/win.h"

// What the screen shows, including other programs' windows.
namespace morvane::test {

// Nothing if the point is outside the screen.
[[nodiscard]] std::optional<COLORREF> PixelAt(POINT at);

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<COLORREF> pixels;  // row by row, top row first

    [[nodiscard]] COLORREF At(int x, int y) const {
        return pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                         static_cast<std::size_t>(x));
    }
    [[nodiscard]] std::size_t Count(COLORREF colour) const;
};

// A copy of part of the screen; empty on failure.
[[nodiscard]] Picture CaptureScreen(const RECT& part);

// An icon at a size in pixels; empty on failure.
[[nodiscard]] Picture DrawIcon(HICON icon, int size, COLORREF background);

}  // namespace morvane::test
