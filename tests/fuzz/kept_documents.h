#pragma once

// Documents that failed once, or were worth keeping.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace morvane::test {

struct KeptDocument {
    std::wstring name;
    std::string bytes;
    std::optional<std::uint32_t> seed;  // from ...-seed-N.txt; makes the texts it failed with
};

// The folder's text files, sorted by name; empty if there is none or one cannot be read.
[[nodiscard]] std::vector<KeptDocument> ReadKeptDocuments(const std::wstring& folder);

}  // namespace morvane::test
