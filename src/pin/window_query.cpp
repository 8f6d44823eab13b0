#include "pin/window_query.h"

#include "base/rect.h"

namespace morvane {
namespace {

template <typename Text, typename Read>
Text ReadInto(Read read, HWND window) {
    Text text;
    const int length = read(window, text.units.data(), static_cast<int>(text.units.size()));
    text.length = length > 0 ? static_cast<std::size_t>(length) : 0;
    return text;
}

}  // namespace

WindowTitle ReadTitle(HWND window) {
    return ReadInto<WindowTitle>(GetWindowTextW, window);
}

WindowClassName ReadClassName(HWND window) {
    return ReadInto<WindowClassName>(GetClassNameW, window);
}

bool HasOwner(HWND window) {
    return GetWindow(window, GW_OWNER) != nullptr;
}

std::optional<RECT> ReadFrame(HWND window) {
    RECT frame{};
    return GetWindowRect(window, &frame) != FALSE ? std::optional(frame) : std::nullopt;
}

std::optional<RECT> ReadMeasurableFrame(HWND window) {
    if (IsWindow(window) == FALSE || IsIconic(window) != FALSE) {
        return std::nullopt;
    }
    const std::optional<RECT> frame = ReadFrame(window);
    return frame && Width(*frame) > 0 && Height(*frame) > 0 ? frame : std::nullopt;
}

}  // namespace morvane
