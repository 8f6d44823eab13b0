#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace morvane::test {

// Empty if the text is not exactly one decimal number, or the number is too large.
[[nodiscard]] std::optional<std::uint64_t> NumberFromText(const std::wstring& text);
[[nodiscard]] std::optional<std::uint32_t> SeedFromText(const std::wstring& text);

}  // namespace morvane::test
