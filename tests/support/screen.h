#pragma once

#include <optional>
#include <vector>

#include "base/gui_owners.h"
#include "base/win.h"

// Pictures, and what the screen shows, including other programs' windows.
namespace morvane::test {

// A picture to draw on: 32 bits a pixel, the top row first, black at first.
class MemoryBitmap {
public:
    MemoryBitmap(int width, int height);

    [[nodiscard]] HDC Context() const { return context_.get(); }

    // Row by row, each pixel blue, green, red and unused; null if the picture has no memory.
    [[nodiscard]] const DWORD* Bits() const { return static_cast<const DWORD*>(bits_); }

private:
    struct ContextTraits : NullableTraits<HDC> {
        static void Close(HDC context) noexcept { DeleteDC(context); }
    };

    void* bits_ = nullptr;
    Owner<GdiTraits<HBITMAP>> bitmap_;
    // Declared last, to be deleted before the bitmap that is selected into it.
    Owner<ContextTraits> context_;
};

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
