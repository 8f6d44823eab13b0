#pragma once

// The documents that have failed once, or were found worth keeping.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace morvane::test {

struct KeptDocument {
    std::wstring name;
    std::string bytes;
    std::optional<std::uint32_t> seed;  // of the other texts it failed with: ...-seed-N.txt
};

// The folder's text files by their names; empty where it has none or one cannot be read.
[[nodiscard]] std::vector<KeptDocument> ReadKeptDocuments(const std::wstring& folder);

}  // namespace morvane::test
