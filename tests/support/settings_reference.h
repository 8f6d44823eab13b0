#pragma once

// A second implementation of the settings format and of window identity, to compare the program
// with. It shares only two structs with the program, and is written to be obviously correct rather
// than fast.

#include <optional>
#include <string>
#include <string_view>

#include "pin/pin_list.h"

namespace morvane::test {

[[nodiscard]] bool IsReferenceSpace(wchar_t unit);
[[nodiscard]] std::wstring ReferenceTrim(const std::wstring& text);

// Converts only "A" to "Z".
[[nodiscard]] std::wstring ReferenceLower(std::wstring text);

// True if the title contains the pattern, ignoring the case of "A" to "Z".
[[nodiscard]] bool ReferenceMatches(const std::wstring& title, const std::wstring& pattern);

// The index of the entry that the title belongs to, or -1.
[[nodiscard]] int ReferenceBestEntry(const PinList& list, const std::wstring& title);

// What a master-switch line sets; none for any other line.
[[nodiscard]] std::optional<bool> ReferenceSwitchLine(const std::wstring& line);

// None for a line without a pattern.
[[nodiscard]] std::optional<PinEntry> ReferenceEntryLine(const std::wstring& line);

[[nodiscard]] PinList ReferenceParse(const std::string& bytes);
[[nodiscard]] std::string ReferenceFormat(const PinList& list);

[[nodiscard]] bool SameEntry(const PinEntry& a, const PinEntry& b);
[[nodiscard]] bool SameList(const PinList& a, const PinList& b);

}  // namespace morvane::test
