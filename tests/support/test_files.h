#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace morvane::test {

// The whole file, shared with every other opener; nothing when it cannot be opened or read.
[[nodiscard]] std::optional<std::string> ReadFileBytes(const std::wstring& path);

// Replaces the file. Other programs may read meanwhile; a reader sees no half-written content
// only if it opens after the return.
[[nodiscard]] bool WriteFileBytes(const std::wstring& path, std::string_view bytes);

[[nodiscard]] bool PathExists(const std::wstring& path);

}  // namespace morvane::test
