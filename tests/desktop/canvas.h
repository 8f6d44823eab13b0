#pragma once

#include <utility>
#include <vector>

#include "base/gui_owners.h"
#include "base/win.h"

namespace morvane::test {

struct CanvasContextTraits {
    using Handle = HDC;
    static Handle Empty() noexcept { return nullptr; }
    static void Close(Handle handle) noexcept { DeleteDC(handle); }
};

// A bitmap to paint on and its device context, initially filled with an unlikely colour.
class Canvas {
public:
    static constexpr COLORREF Untouched = RGB(255, 0, 254);

    Canvas(int width, int height);

    [[nodiscard]] HDC Context() const { return context_.get(); }
    [[nodiscard]] COLORREF At(int x, int y) const { return GetPixel(context_.get(), x, y); }

    // Row by row, top row first.
    [[nodiscard]] std::vector<COLORREF> Pixels() const;

    // The points (x, y) of this colour, row by row, relative to an origin.
    using Points = std::vector<std::pair<LONG, LONG>>;
    [[nodiscard]] Points PointsOf(COLORREF colour, POINT origin = {0, 0}) const;

private:
    int width_;
    int height_;
    Owner<GdiTraits<HBITMAP>> bitmap_;
    // Declared last, to be deleted before the bitmap that is selected into it.
    Owner<CanvasContextTraits> context_;
};

}  // namespace morvane::test
