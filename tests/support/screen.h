#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/win.h"

// What the screen shows, windows of other programs included.
namespace morvane::test {

// Nothing when the point lies outside the screen.
[[nodiscard]] std::optional<COLORREF> PixelAt(POINT at);

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<COLORREF> pixels;  // row by row from the top

    [[nodiscard]] COLORREF At(int x, int y) const {
        return pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                         static_cast<std::size_t>(x));
    }
    [[nodiscard]] std::size_t Count(COLORREF colour) const;
};

// A copy of part of the screen; empty when the copy fails.
[[nodiscard]] Picture CaptureScreen(const RECT& part);

// Writes the whole screen to a PNG file; the path is a Windows path.
[[nodiscard]] bool SaveScreenshot(const std::wstring& path);

}  // namespace morvane::test
