#pragma once

// The format of config.txt as pure functions: bytes to list and list to bytes.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "pin/pin_list.h"

namespace morvane {

// Reads a whole file's content. Never fails: what is not understood is a pattern or is skipped.
[[nodiscard]] PinList ParseSettingsText(std::string_view bytes);

// The one canonical form of a list, UTF-8 with LF line ends.
[[nodiscard]] std::string FormatSettingsText(const PinList& list);

// True when the line is a master-switch line; list.pinning has then been set from it.
[[nodiscard]] bool ParsePinningLine(std::wstring_view line, PinList& list);

// None when the line holds no pattern.
[[nodiscard]] std::optional<PinEntry> ParseEntryLine(std::wstring_view line);

// True when text ends in a size: text is then cut down to the pattern, and width and height are
// set (pixels, 0 to MaxMinSize). Otherwise nothing is changed.
bool SplitSizeSuffix(std::wstring_view& text, std::int32_t& width, std::int32_t& height);

}  // namespace morvane
