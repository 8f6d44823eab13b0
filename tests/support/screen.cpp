#include "support/screen.h"

#include <algorithm>

namespace morvane::test {
namespace {

// A COLORREF has red in the lowest byte.
COLORREF ColourFromDib(DWORD pixel) {
    return RGB((pixel >> 16) & 0xFFU, (pixel >> 8) & 0xFFU, pixel & 0xFFU);
}

// What draw(context) draws into a black picture; empty if it returns FALSE.
template <typename Draw>
Picture Drawn(int width, int height, Draw draw) {
    const MemoryBitmap bitmap(width, height);
    if (bitmap.Bits() == nullptr || draw(bitmap.Context()) == FALSE) {
        return {};
    }
    GdiFlush();
    Picture picture{width, height, {}};
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    picture.pixels.resize(count);
    std::transform(bitmap.Bits(), bitmap.Bits() + count, picture.pixels.begin(), ColourFromDib);
    return picture;
}

}  // namespace

MemoryBitmap::MemoryBitmap(int width, int height) : context_(CreateCompatibleDC(nullptr)) {
    BITMAPINFO format{};
    format.bmiHeader.biSize = sizeof(format.bmiHeader);
    format.bmiHeader.biWidth = width;
    // A negative height asks for the top row first.
    format.bmiHeader.biHeight = -height;
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 32;
    format.bmiHeader.biCompression = BI_RGB;
    bitmap_.reset(CreateDIBSection(context_.get(), &format, DIB_RGB_COLORS, &bits_, nullptr, 0));
    SelectObject(context_.get(), bitmap_.get());
}

std::optional<COLORREF> PixelAt(POINT at) {
    const WindowDc screen(nullptr);
    const COLORREF colour = GetPixel(screen.get(), at.x, at.y);
    return colour == CLR_INVALID ? std::nullopt : std::optional<COLORREF>(colour);
}

std::size_t Picture::Count(COLORREF colour) const {
    return static_cast<std::size_t>(std::count(pixels.begin(), pixels.end(), colour));
}

Picture CaptureScreen(const RECT& part) {
    const int width = part.right - part.left;
    const int height = part.bottom - part.top;
    return Drawn(width, height, [&](HDC memory) {
        const WindowDc screen(nullptr);
        return BitBlt(memory, 0, 0, width, height, screen.get(), part.left, part.top, SRCCOPY);
    });
}

Picture DrawIcon(HICON icon, int size, COLORREF background) {
    return Drawn(size, size, [=](HDC memory) {
        SetDCBrushColor(memory, background);
        return DrawIconEx(memory, 0, 0, icon, size, size, 0,
                          static_cast<HBRUSH>(GetStockObject(DC_BRUSH)), DI_NORMAL);
    });
}

}  // namespace morvane::test
