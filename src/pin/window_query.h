#pragma once

// What the program reads of other programs' windows. A window that has died gives an empty answer.

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <type_traits>

#include "base/win.h"

namespace morvane {

// A window's text in a fixed buffer. Capacity includes the terminator: longer text is cut to
// Capacity - 1 units.
template <std::size_t Capacity>
struct WindowText {
    std::array<wchar_t, Capacity> units{};
    std::size_t length = 0;

    [[nodiscard]] std::wstring_view View() const { return {units.data(), length}; }
};

using WindowTitle = WindowText<512>;
using WindowClassName = WindowText<256>;

[[nodiscard]] WindowTitle ReadTitle(HWND window);
[[nodiscard]] WindowClassName ReadClassName(HWND window);

[[nodiscard]] bool HasOwner(HWND window);

// Outer frame in screen coordinates, pixels of a DPI-unaware program.
[[nodiscard]] std::optional<RECT> ReadFrame(HWND window);

// The frame of a window that a minimum size can be taken from now: alive, not minimised, and with
// a width and a height.
[[nodiscard]] std::optional<RECT> ReadMeasurableFrame(HWND window);

// Calls visit(window) for every top-level window, from the top of the Z-order downwards.
template <typename Visit>
void ForEachTopLevelWindow(Visit&& visit) {
    using Visitor = std::remove_reference_t<Visit>;
    const auto callback = [](HWND window, LPARAM parameter) -> BOOL {
        (*reinterpret_cast<Visitor*>(parameter))(window);
        return TRUE;
    };
    EnumWindows(callback, reinterpret_cast<LPARAM>(&visit));
}

}  // namespace morvane
