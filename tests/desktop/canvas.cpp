#include "desktop/canvas.h"

#include <cstddef>

namespace morvane::test {

Canvas::Canvas(int width, int height) : width_(width), height_(height), bitmap_(width, height) {
    const Brush brush(CreateSolidBrush(Untouched));
    const RECT all{0, 0, width, height};
    FillRect(Context(), &all, brush.get());
}

std::vector<COLORREF> Canvas::Pixels() const {
    std::vector<COLORREF> pixels;
    pixels.reserve(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_));
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            pixels.push_back(At(x, y));
        }
    }
    return pixels;
}

Canvas::Points Canvas::PointsOf(COLORREF colour, POINT origin) const {
    Points points;
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            if (At(x, y) == colour) {
                points.emplace_back(x - origin.x, y - origin.y);
            }
        }
    }
    return points;
}

}  // namespace morvane::test
