#include "settings/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

#include "base/win.h"

namespace morvane {
namespace {

constexpr std::wstring_view Ellipsis = L"...";

// The platform's conversions take the length as an int.
bool FitsInt(std::size_t length) {
    return length <= static_cast<std::size_t>(std::numeric_limits<int>::max());
}

}  // namespace

std::wstring Utf8ToWide(std::string_view bytes) {
    std::wstring buffer;
    return std::wstring(Utf8ToWide(bytes, buffer));
}

std::wstring_view Utf8ToWide(std::string_view bytes, std::wstring& buffer) {
    constexpr std::size_t SmallestBuffer = 512;
    if (bytes.empty() || !FitsInt(bytes.size())) {
        return {};
    }
    // UTF-16 never takes more units than UTF-8 takes bytes, so there is no need to ask for the
    // length.
    if (buffer.size() < bytes.size()) {
        buffer.resize(std::max(bytes.size(), SmallestBuffer));
    }
    const int byteCount = static_cast<int>(bytes.size());
    const int length =
        MultiByteToWideChar(CP_UTF8, 0, bytes.data(), byteCount, buffer.data(), byteCount);
    return {buffer.data(), static_cast<std::size_t>(std::max(length, 0))};
}

std::string WideToUtf8(std::wstring_view text) {
    if (text.empty() || !FitsInt(text.size())) {
        return {};
    }
    const int unitCount = static_cast<int>(text.size());
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), unitCount, nullptr, 0, nullptr, nullptr);
    if (length <= 0) {
        return {};
    }
    std::string bytes(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), unitCount, bytes.data(), length, nullptr, nullptr);
    return bytes;
}

bool IsWhiteSpace(wchar_t unit) {
    constexpr wchar_t LastLatin1 = 0xFF;
    if (unit <= LastLatin1) {
        // The platform's table also counts U+0085 and U+00A0.
        return (unit >= L'\t' && unit <= L'\r') || unit == L' ';
    }
    WORD type = 0;
    return GetStringTypeW(CT_CTYPE1, &unit, 1, &type) != FALSE && (type & C1_SPACE) != 0;
}

std::wstring_view TrimmedView(std::wstring_view text) {
    while (!text.empty() && IsWhiteSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsWhiteSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::wstring TrimWhitespace(std::wstring_view text) {
    return std::wstring(TrimmedView(text));
}

std::wstring ToLowerCopy(std::wstring_view text) {
    std::wstring folded(text);
    std::ranges::transform(folded, folded.begin(), FoldCase);
    return folded;
}

bool EqualsIgnoreCase(std::wstring_view a, std::wstring_view b) {
    return std::ranges::equal(a, b, {}, FoldCase, FoldCase);
}

std::string FormatInteger(std::int32_t value) {
    // Streams and std::to_wstring would link all of the runtime's number formatting.
    std::array<char, std::numeric_limits<std::int32_t>::digits10 + 2> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), result.ptr};
}

std::wstring FormatSize(std::int32_t width, std::int32_t height) {
    const std::string text = FormatInteger(width).append(" x ").append(FormatInteger(height));
    return {text.begin(), text.end()};
}

std::wstring TruncateWithEllipsis(std::wstring_view text, std::size_t maxLength) {
    if (text.size() <= maxLength) {
        return std::wstring(text);
    }
    // The cut may split a surrogate pair: in a menu row that costs one odd character.
    const std::size_t dots = std::min(maxLength, Ellipsis.size());
    std::wstring cut(text.substr(0, maxLength - dots));
    return cut.append(Ellipsis.substr(0, dots));
}

}  // namespace morvane
