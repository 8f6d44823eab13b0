#pragma once

// A second implementation of the settings file's format and of window identity, for tests that
// compare the program with it. It shares no code with the program but the two records, and it is
// written for plainness: one small step after the other, however slow.

#include <optional>
#include <string>
#include <string_view>

#include "pin/pin_list.h"

namespace morvane::test {

[[nodiscard]] bool IsReferenceSpace(wchar_t unit);
[[nodiscard]] std::wstring ReferenceTrim(const std::wstring& text);

// Only "A" to "Z" change.
[[nodiscard]] std::wstring ReferenceLower(std::wstring text);

// True when the title holds the pattern, without regard to the case of "A" to "Z".
[[nodiscard]] bool ReferenceMatches(const std::wstring& title, const std::wstring& pattern);

// The index of the entry that a title belongs to, or -1.
[[nodiscard]] int ReferenceBestEntry(const PinList& list, const std::wstring& title);

// None for a line that is no master switch, else what it sets.
[[nodiscard]] std::optional<bool> ReferenceSwitchLine(const std::wstring& line);

// None for a line without a pattern.
[[nodiscard]] std::optional<PinEntry> ReferenceEntryLine(const std::wstring& line);

[[nodiscard]] PinList ReferenceParse(const std::string& bytes);
[[nodiscard]] std::string ReferenceFormat(const PinList& list);

[[nodiscard]] bool SameEntry(const PinEntry& a, const PinEntry& b);
[[nodiscard]] bool SameList(const PinList& a, const PinList& b);

}  // namespace morvane::test
