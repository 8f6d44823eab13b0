#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace morvane::test {

// Empty when the text is not wholly one decimal number, or too large a one.
[[nodiscard]] std::optional<std::uint64_t> NumberFromText(const std::wstring& text);
[[nodiscard]] std::optional<std::uint32_t> SeedFromText(const std::wstring& text);

}  // namespace morvane::test
