#pragma once

// Text helpers for the whole program, without state. Lengths are in UTF-16 code units.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace morvane {

// Ill-formed bytes become U+FFFD. Empty when the platform refuses the text.
[[nodiscard]] std::wstring Utf8ToWide(std::string_view bytes);

// The same into a buffer that only grows, for callers with many texts. The view is part of it.
[[nodiscard]] std::wstring_view Utf8ToWide(std::string_view bytes, std::wstring& buffer);

// The platform replaces unpaired surrogates. Empty when it refuses the text.
[[nodiscard]] std::string WideToUtf8(std::wstring_view text);

// The one white-space class of the program.
[[nodiscard]] bool IsWhiteSpace(wchar_t unit);

// A view into text, without white space at its ends. For callers that only look.
[[nodiscard]] std::wstring_view TrimmedView(std::wstring_view text);

[[nodiscard]] std::wstring TrimWhitespace(std::wstring_view text);

// "A" to "Z" become "a" to "z"; every other unit stays as it is, whatever locale anybody sets.
[[nodiscard]] constexpr wchar_t FoldCase(wchar_t unit) {
    return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit - L'A' + L'a') : unit;
}

[[nodiscard]] std::wstring ToLowerCopy(std::wstring_view text);

[[nodiscard]] bool EqualsIgnoreCase(std::wstring_view a, std::wstring_view b);

// The plain decimal form, with "-" before a negative value.
[[nodiscard]] std::string FormatInteger(std::int32_t value);

// "1280 x 720".
[[nodiscard]] std::wstring FormatSize(std::int32_t width, std::int32_t height);

// Text of more than maxLength units comes back as its beginning and "...", maxLength units in
// all; with a maxLength below 3 as that many full stops.
[[nodiscard]] std::wstring TruncateWithEllipsis(std::wstring_view text, std::size_t maxLength);

}  // namespace morvane
