#pragma once

#include <utility>
#include <vector>

#include "base/win.h"
#include "support/screen.h"

namespace morvane::test {

// A picture to paint on, initially filled with an unlikely colour.
class Canvas {
public:
    static constexpr COLORREF Untouched = RGB(255, 0, 254);

    Canvas(int width, int height);

    [[nodiscard]] HDC Context() const { return bitmap_.Context(); }
    [[nodiscard]] COLORREF At(int x, int y) const { return GetPixel(Context(), x, y); }

    // Row by row, top row first.
    [[nodiscard]] std::vector<COLORREF> Pixels() const;

    // The points (x, y) of this colour, row by row, relative to an origin.
    using Points = std::vector<std::pair<LONG, LONG>>;
    [[nodiscard]] Points PointsOf(COLORREF colour, POINT origin = {0, 0}) const;

private:
    int width_;
    int height_;
    MemoryBitmap bitmap_;
};

}  // namespace morvane::test
