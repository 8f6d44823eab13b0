#include "fuzz/number.h"

#include <cerrno>
#include <cwchar>
#include <limits>

namespace morvane::test {

std::optional<std::uint64_t> NumberFromText(const std::wstring& text) {
    // The conversion would accept blanks, a sign and no digits at all.
    if (text.empty() || text.find_first_not_of(L"0123456789") != std::wstring::npos) {
        return std::nullopt;
    }
    errno = 0;
    const std::uint64_t number = std::wcstoull(text.c_str(), nullptr, 10);
    return errno == ERANGE ? std::nullopt : std::optional(number);
}

std::optional<std::uint32_t> SeedFromText(const std::wstring& text) {
    const std::optional<std::uint64_t> number = NumberFromText(text);
    if (!number || *number > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(*number);
}

}  // namespace morvane::test
