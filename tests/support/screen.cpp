#include "support/screen.h"

#include <algorithm>

#include "base/gui_owners.h"

namespace morvane::test {
namespace {

struct MemoryContextTraits : NullableTraits<HDC> {
    static void Close(HDC context) noexcept { DeleteDC(context); }
};

// A DIB stores blue, green, red, unused; a COLORREF has red in the lowest byte.
COLORREF ColourFromDib(DWORD pixel) {
    return RGB((pixel >> 16) & 0xFFU, (pixel >> 8) & 0xFFU, pixel & 0xFFU);
}

// What draw(context) draws into a black picture; empty if it returns FALSE.
template <typename Draw>
Picture Drawn(int width, int height, Draw draw) {
    const WindowDc screen(nullptr);
    const Owner<MemoryContextTraits> memory(CreateCompatibleDC(screen.get()));
    BITMAPINFO format{};
    format.bmiHeader.biSize = sizeof(format.bmiHeader);
    format.bmiHeader.biWidth = width;
    // A negative height asks for the top row first.
    format.bmiHeader.biHeight = -height;
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 32;
    format.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    const Owner<GdiTraits<HBITMAP>> bitmap(
        CreateDIBSection(screen.get(), &format, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!bitmap || bits == nullptr) {
        return {};
    }
    const SelectGuard selected(memory.get(), bitmap.get());
    if (draw(memory.get()) == FALSE) {
        return {};
    }
    GdiFlush();
    Picture picture{width, height, {}};
    const auto* first = static_cast<const DWORD*>(bits);
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    picture.pixels.resize(count);
    std::transform(first, first + count, picture.pixels.begin(), ColourFromDib);
    return picture;
}

}  // namespace

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
