#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/owners.h"

namespace morvane::test {

// The whole file, opened with full sharing; nothing if it cannot be opened or read.
[[nodiscard]] std::optional<std::string> ReadFileBytes(const std::wstring& path);

// Replaces the file's content. Other programs may read it meanwhile, and may then see it half
// written.
[[nodiscard]] bool WriteFileBytes(const std::wstring& path, std::string_view bytes);

// Holds an existing file open as another program would; empty if it cannot be opened.
[[nodiscard]] FileHandle HoldFile(const std::wstring& path, DWORD access, DWORD sharing);

[[nodiscard]] bool PathExists(const std::wstring& path);

// The verbatim form, which allows more than 260 units and trailing dots and blanks.
[[nodiscard]] std::wstring AsItStands(const std::wstring& path);

}  // namespace morvane::test
