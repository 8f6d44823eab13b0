#include "pin/identity.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

#include "support/printed.h"

namespace morvane::test {

namespace {

using namespace std::string_view_literals;

PinList ListOf(std::initializer_list<std::wstring_view> patterns) {
    PinList list;
    for (const std::wstring_view pattern : patterns) {
        list.entries.push_back({std::wstring(pattern), 0, 0});
    }
    return list;
}

TEST(PatternMatches, FindsThePatternAnywhereInTheTitle) {
    struct Case {
        std::wstring_view title;
        std::wstring_view pattern;
        bool matches;
    };
    constexpr Case Cases[] = {
        {L"", L"", true},
        {L"a", L"", true},
        {L"", L"a", false},
        {L"a.txt - Notepad", L"a.txt - Notepad", true},
        {L"a.txt - Notepad", L"notepad", true},
        {L"a.txt - Notepad", L"A.TXT", true},
        {L"a.txt - Notepad", L" - ", true},
        {L"a.txt - Notepad", L"note pad", false},
        {L"a.txt - Notepad", L"notepad ", false},  // blanks count
        {L"a.txt - Notepad", L" notepad", true},
        {L"a.txt - Notepad", L"a.txt - Notepad+", false},
        {L"a.txt - Notepad", L"*", false},  // no wildcards
        {L"a.txt - Notepad", L"n?tepad", false},
        {L"a.txt - Notepad", L"a.txt", true},
        {L"axtxt", L"a.txt", false},
        {L"aaab", L"aab", true},  // the search recovers from a false start
        {L"\u00C9t\u00E9", L"\u00E9t\u00E9", false},
        {L"\u00C9t\u00E9", L"\u00C9T\u00E9", true},
        {L"e\u0301", L"\u00E9", false},  // no normalisation
        {L"\u7A93\u3000\u7A93", L"\u3000", true},
        {L"[abc]", L"{", false},
        {L"a\0Notepad"sv, L"notepad", true},
        {L"a\0b"sv, L"A\0B"sv, true},
    };
    for (const auto& [title, pattern, matches] : Cases) {
        EXPECT_EQ(PatternMatches(title, pattern), matches)
            << Printed(pattern) << " in " << Printed(title);
    }
}

TEST(PatternEquals, ComparesTheWholeTitle) {
    struct Case {
        std::wstring_view pattern;
        std::wstring_view title;
        bool equal;
    };
    constexpr Case Cases[] = {
        {L"", L"", true},
        {L"", L"a", false},
        {L"a", L"", false},
        {L"A", L"a", true},
        {L"notepad", L"NotePad", true},
        {L"notepad", L"notepad ", false},
        {L"note", L"notepad", false},
        {L"notepad", L"note", false},
        {L"\u00C9", L"\u00E9", false},
        {L"\u00E9", L"\u00E9", true},
    };
    for (const auto& [pattern, title, equal] : Cases) {
        EXPECT_EQ(PatternEquals(pattern, title), equal)
            << Printed(pattern) << " and " << Printed(title);
    }
}

TEST(FindBestEntry, PicksTheLongestPatternAndTheEarliestAmongEquals) {
    struct Case {
        const char* name;
        PinList list;
        std::wstring_view title;
        std::int32_t index;
    };
    const std::wstring longTitle = std::wstring(600, L'x') + L"Notepad";
    const Case cases[] = {
        {"no entries", ListOf({}), L"a.txt - Notepad", -1},
        {"no entries, no title", ListOf({}), L"", -1},
        {"none matches", ListOf({L"paint", L"notepad+"}), L"a.txt - Notepad", -1},
        {"the longer one last", ListOf({L"note", L"notepad"}), L"a.txt - Notepad", 1},
        {"the longer one first", ListOf({L"notepad", L"note"}), L"a.txt - Notepad", 0},
        {"in the middle", ListOf({L"t", L"notepad", L"note"}), L"a.txt - Notepad", 1},
        {"equals", ListOf({L"Notepad", L"NOTEPAD"}), L"a.txt - Notepad", 0},
        {"equals behind a shorter", ListOf({L"a", L"otepad", L"Notepa"}), L"a - Notepad", 1},
        {"a longer one that does not match", ListOf({L"note", L"notebook"}), L"Notepad", 0},
        {"as long as the title", ListOf({L"x", L"NOTEPAD"}), L"notepad", 1},
        {"an empty pattern", ListOf({L""}), L"a.txt - Notepad", -1},
        {"an empty pattern, no title", ListOf({L""}), L"", -1},
        {"an empty pattern first", ListOf({L"", L"a"}), L"a", 1},
        {"an empty pattern last", ListOf({L"a", L""}), L"a", 0},
        {"case beyond ASCII", ListOf({L"\u00E9", L"\u00C9"}), L"\u00C9", 1},
        {"at the end of a long title", ListOf({L"NOTEPADS", L"xNOTEPAD"}), longTitle, 1},
        {"the last of many", ListOf({L"a", L"b", L"c", L"d", L"e"}), L"E", 4},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(FindBestEntryIndex(c.list, c.title), c.index);
        EXPECT_EQ(IsPinnedTitle(c.list, c.title), c.index >= 0);
        const PinEntry* const expected =
            c.index < 0 ? nullptr : &c.list.entries[static_cast<std::size_t>(c.index)];
        EXPECT_EQ(FindBestEntry(c.list, c.title), expected);
    }
}

TEST(PinStateForTitle, ReportsWhetherTheIdentifyingEntryHasAMinimumSize) {
    const std::pair<PinList, PinState> cases[] = {
        {{true, {}}, PinState::NotPinned},
        {{true, {{L"paint", 5, 6}}}, PinState::NotPinned},
        {{true, {{L"", 5, 6}}}, PinState::NotPinned},
        {{true, {{L"notepad", 0, 0}}}, PinState::Pinned},
        {{true, {{L"notepad", -1, -1}}}, PinState::Pinned},
        {{true, {{L"notepad", 1, 0}}}, PinState::PinnedWithMinSize},
        {{true, {{L"notepad", 0, 1}}}, PinState::PinnedWithMinSize},
        {{true, {{L"notepad", 1280, 720}}}, PinState::PinnedWithMinSize},
        {{true, {{L"note", 5, 6}, {L"notepad", 0, 0}}}, PinState::Pinned},
        {{true, {{L"notepad", 0, 0}, {L"Notepad", 5, 6}}}, PinState::Pinned},
        {{true, {{L"", 5, 6}, {L"notepad", 0, 0}}}, PinState::Pinned},
        {{false, {{L"notepad", 5, 6}}}, PinState::PinnedWithMinSize},
    };
    for (const auto& [list, state] : cases) {
        EXPECT_EQ(PinStateForTitle(list, L"a.txt - Notepad"), state) << Printed(list);
    }
}

TEST(PinState, IsNumberedFromZeroToTwo) {
    EXPECT_EQ(static_cast<int>(PinState::NotPinned), 0);
    EXPECT_EQ(static_cast<int>(PinState::Pinned), 1);
    EXPECT_EQ(static_cast<int>(PinState::PinnedWithMinSize), 2);
}

}  // namespace

}  // namespace morvane::test
