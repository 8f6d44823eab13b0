#pragma once

// The windows and the settings that are measured with.

#include <string>
#include <vector>

#include "base/win.h"
#include "support/actor.h"

namespace morvane::bench {

// The windows of the other process: ordinary ones, and those that a pattern matches once the
// settings hold it. No title of the one kind begins with the first unit of the other.
inline constexpr wchar_t PlainTitle[] = L"Document - an ordinary window of another program ";
inline constexpr wchar_t PinnedTitle[] = L"Pinned - a window of another program ";

// Small ones, so that their painting is not what is measured.
[[nodiscard]] std::vector<HWND> AddWindows(test::Actor& actor, int count, const wchar_t* title);

// So many entries, none of which the windows above belong to.
[[nodiscard]] std::string UnmatchedEntries(int count);

// As many entries; the last one is what all titles of the pinned kind contain, so that no pattern
// before it is refused for its length.
[[nodiscard]] std::string EntriesWithMatch(int count);

// So many entries that are beginnings of the titles with one late unit changed: what takes long
// to refuse. Titles of more than 34 units; which of them an entry comes from goes round.
[[nodiscard]] std::string NearMisses(const std::vector<std::wstring>& titles, int count);

// How often a pass asks for memory that has seen all windows before.
[[nodiscard]] double AllocationsOfPass();

// The engine as the program binds it, to a settings file with these lines.
void BindEngine(const std::string& lines);

}  // namespace morvane::bench
