#pragma once

// The windows and settings to measure with.

#include <string>
#include <vector>

#include "base/win.h"
#include "support/actor.h"

namespace morvane::bench {

// Titles of the other process's windows: ordinary ones, and ones that the last of EntriesWithMatch
// matches. The two begin with different units.
inline constexpr wchar_t PlainTitle[] = L"Document - an ordinary window of another program ";
inline constexpr wchar_t PinnedTitle[] = L"Pinned - a window of another program ";

// Small windows, so that painting them does not count.
[[nodiscard]] std::vector<HWND> AddWindows(test::Actor& actor, int count, const wchar_t* title);

// Entries that no title above contains.
[[nodiscard]] std::string UnmatchedEntries(int count);

// The same, but all pinned titles contain the last one: earlier it would rule out shorter patterns
// by their length.
[[nodiscard]] std::string EntriesWithMatch(int count);

// Entries that are beginnings of the titles, used in turn, with one late unit changed: these are
// slow to rule out. The titles must be longer than 34 units.
[[nodiscard]] std::string NearMisses(const std::vector<std::wstring>& titles, int count);

// The allocations of a pass that has seen all windows before.
[[nodiscard]] double AllocationsOfPass();

// Binds the engine as the program does, to a settings file with these lines.
void BindEngine(const std::string& lines);

}  // namespace morvane::bench
