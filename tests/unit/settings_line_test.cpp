#include <gtest/gtest.h>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "settings/settings_text.h"
#include "support/printed.h"

namespace morvane::test {

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

// Whether the line is a switch line, and what it leaves in the list, whatever that was before.
void ExpectSwitch(std::wstring_view line, std::optional<bool> pinning) {
    for (const bool before : {false, true}) {
        PinList list{before, {{L"kept", 1, 2}}};
        EXPECT_EQ(ParsePinningLine(line, list), pinning.has_value()) << Printed(line);
        EXPECT_EQ(Printed(list), Printed({pinning.value_or(before), {{L"kept", 1, 2}}}))
            << Printed(line);
    }
}

TEST(ParsePinningLine, SwitchesPinningOff) {
    constexpr std::wstring_view Lines[] = {
        L"@pinning=0",       L"@pinning=false",     L"@pinning=off",      L"@PINNING=False",
        L"@Pinning=OFF",     L"@pinning=FALSE",     L"@pInNiNg=oFf",      L"@pinning= 0 ",
        L"@pinning=\toff",   L"  @pinning=0",       L"\t@pinning=0\t",    L"@pinning=0\r",
        L"@pinning=\u30000", L"\u3000@pinning=off", L"@pinning=\v\f 0\n", L"@pinning=   false",
    };
    for (const std::wstring_view line : Lines) {
        ExpectSwitch(line, false);
    }
}

TEST(ParsePinningLine, SwitchesPinningOnForEveryOtherValue) {
    constexpr std::wstring_view Lines[] = {
        L"@pinning=1",       L"@pinning=on",        L"@pinning=yes",   L"@pinning=00",
        L"@pinning=no",      L"@pinning=0 0",       L"@pinning=-0",    L"@pinning=0.",
        L"@pinning=offf",    L"@pinning=of",        L"@pinning=fals",  L"@pinning=falsee",
        L"@pinning==0",      L"@pinning=0 1280 72", L"@pinning=\"0\"", L"@pinning=0 # off",
        L"@pinning=\u00A00", L"@pinning=\uFF10",    L"@pinning=x",     L"@pinning=0\0"sv,
        L"@PINNING=TRUE",    L"@pinning=f\u00E4lse"};
    for (const std::wstring_view line : Lines) {
        ExpectSwitch(line, true);
    }
}

TEST(ParsePinningLine, LeavesEveryOtherLineAndTheListAlone) {
    constexpr std::wstring_view Lines[] = {
        L"",
        L" ",
        L"@",
        L"@pinning",
        L"@pinning=",        // no value: an entry
        L"  @pinning=  \t",  // neither
        L"@pinning = 0",     // blanks inside the prefix
        L"@ pinning=0",
        L"pinning=0",
        L"x@pinning=0",
        L"@pinning:0",
        L"@pinningx=0",
        L"@pinn\u0131ng=0",
        L"@pinn\u0130ng=0",
        L"\uFF20pinning=0",
        L"@pinning\0=0"sv,
        L"notepad",
        L"# @pinning=0",
    };
    for (const std::wstring_view line : Lines) {
        ExpectSwitch(line, std::nullopt);
    }
}

struct EntryCase {
    std::wstring line;
    PinEntry entry;
};

void ExpectEntries(std::initializer_list<EntryCase> cases) {
    for (const EntryCase& c : cases) {
        const std::optional<PinEntry> entry = ParseEntryLine(c.line);
        EXPECT_EQ(entry ? Printed(*entry) : "none", Printed(c.entry)) << Printed(c.line);
    }
}

TEST(ParseEntryLine, YieldsNothingForABlankLine) {
    for (const std::wstring_view line : {L"", L" ", L"\t", L" \t \r\n\v\f", L"\u3000\u2003"}) {
        EXPECT_FALSE(ParseEntryLine(line).has_value()) << Printed(line);
    }
}

TEST(ParseEntryLine, ReadsALineWithASize) {
    ExpectEntries({
        // With TABs.
        {L"Visual Studio Code\t1280\t720", {L"Visual Studio Code", 1280, 720}},
        {L"Notes\t0\t600", {L"Notes", 0, 600}},
        {L"Notes\t600\t0", {L"Notes", 600, 0}},
        {L"  Notes \t 1280 \t 720  ", {L"Notes", 1280, 720}},
        {L"Notes\t1280\t720\t", {L"Notes", 1280, 720}},
        {L"Notes\t\u30001280\u3000\t\v720", {L"Notes", 1280, 720}},
        {L"a 1 2\t3\t4", {L"a 1 2", 3, 4}},
        {L"12 34\t56\t78", {L"12 34", 56, 78}},
        {L"5\t6\t7", {L"5", 6, 7}},
        {L"# note\t5\t6", {L"# note", 5, 6}},
        {L"@pinning=\t5\t6", {L"@pinning=", 5, 6}},
        {L"a\0b\t5\t6"s, {L"a\0b"s, 5, 6}},
        // With blanks.
        {L"Visual Studio Code 1280 720", {L"Visual Studio Code", 1280, 720}},
        {L"Foo   1280    720", {L"Foo", 1280, 720}},
        {L"  Foo 1280 720  ", {L"Foo", 1280, 720}},
        {L"Report 2024 01", {L"Report", 2024, 1}},
        {L"1 2 3", {L"1", 2, 3}},
        {L"Foo 12 80 720", {L"Foo 12", 80, 720}},
        {L"Foo \v1280 \f720", {L"Foo", 1280, 720}},
        {L"Foo 1280\v \v 720", {L"Foo", 1280, 720}},
        {L"Foo\u3000 1280\u3000 720", {L"Foo", 1280, 720}},
        {L"Foo \u30001280 \u3000720", {L"Foo", 1280, 720}},
        // With both, where the TAB form does not match.
        {L"Foo\t1280 720", {L"Foo", 1280, 720}},
        {L"Foo 1280\t720", {L"Foo", 1280, 720}},
        {L"Foo\t\t1280\t720", {L"Foo", 1280, 720}},
        {L"Foo\t1280\t\t720", {L"Foo", 1280, 720}},
        {L"Foo \t 1280 \t \t 720", {L"Foo", 1280, 720}},
        {L"Foo\t1280\t720\t5", {L"Foo\t1280", 720, 5}},
        {L"a\tb\t5\t6", {L"a\tb", 5, 6}},
        {L"a\t5\t6 7", {L"a\t5", 6, 7}},
    });
}

TEST(ParseEntryLine, TakesALineWithoutAWellFormedSizeAsThePattern) {
    constexpr std::wstring_view Lines[] = {
        L"notepad",
        L"a b",
        L"Foo 1280",
        L"1280 720",
        L"1280\t720",
        L"1280",
        L"1280  \t 720",
        L"Foo -5 10",
        L"Foo +5 10",
        L"Foo 5 -10",
        L"Foo\t-5\t10",
        L"Foo\t+5\t10",
        L"Foo\t1280\tabc",
        L"Foo\tabc\t720",
        L"Foo abc 720",
        L"Foo\t1280",
        L"Foo 1280x720",
        L"Foo 1280 x 720",
        L"Foo 1280 720px",
        L"Foo 0x10 0x10",
        L"Foo 1e3 720",
        L"Foo 12.5 720",
        L"Foo 1,280 720",
        L"Foo \uFF11\uFF12 720",
        L"Foo\t\uFF11\uFF12\t720",
        L"Foo 1280 \u0661\u0662",
        L"Foo\u30001280\u3000720",
        L"Foo\v1280 720",
        L"Foo 1280\u3000720",
        L"Foo 1280\u00A0 720",
        L"@pinning=",
        L"@pinning = 0",
        L"# note",
        L"a\rb",
        L"\0"sv,
        L"Foo 1280\0 720"sv,
        L"Foo 1280 720\0"sv,
    };
    for (const std::wstring_view line : Lines) {
        ExpectEntries({{std::wstring(line), {std::wstring(line), 0, 0}}});
    }
    ExpectEntries({
        {L" \t\u3000notepad \r", {L"notepad", 0, 0}},
        {L"\t5\t6", {L"5\t6", 0, 0}},
    });
}

TEST(ParseEntryLine, ReadsNumbersOfAnyLengthAndCapsThem) {
    const std::wstring nines(40, L'9');
    const std::wstring zeros(40, L'0');
    ExpectEntries({
        {L"Foo 0 0", {L"Foo", 0, 0}},
        {L"Foo 00 000", {L"Foo", 0, 0}},
        {L"Foo 1 1", {L"Foo", 1, 1}},
        {L"Foo 0800 007", {L"Foo", 800, 7}},
        {L"Foo 8191 8192", {L"Foo", 8191, 8192}},
        {L"Foo 8193 8200", {L"Foo", 8192, 8192}},
        {L"Foo 99999 0", {L"Foo", 8192, 0}},
        {L"Foo 2147483647 2147483648", {L"Foo", 8192, 8192}},
        {L"Foo 4294967296 4294967297", {L"Foo", 8192, 8192}},
        {L"Foo 18446744073709551616 18446744073709551617", {L"Foo", 8192, 8192}},
        {L"Foo " + nines + L" 5", {L"Foo", 8192, 5}},
        {L"Foo\t5\t" + nines, {L"Foo", 5, 8192}},
        {L"Foo " + zeros + L" " + zeros + L"720", {L"Foo", 0, 720}},
        {L"Foo\t1" + zeros + L"\t0" + nines, {L"Foo", 8192, 8192}},
    });
}

TEST(ParseEntryLine, CutsThePatternTo512Units) {
    const std::wstring most(512, L'a');
    ExpectEntries({
        {std::wstring(511, L'a'), {std::wstring(511, L'a'), 0, 0}},
        {most, {most, 0, 0}},
        {most + L"b", {most, 0, 0}},
        {std::wstring(600, L'a'), {most, 0, 0}},
        {std::wstring(600, L'a') + L"\t5\t6", {most, 5, 6}},
        {std::wstring(600, L'a') + L" 5 6", {most, 5, 6}},
        {most + L" 5 6", {most, 5, 6}},
        {most + L" 5", {most, 0, 0}},
        // The cut counts units: it may leave a trailing blank or half a surrogate pair.
        {std::wstring(511, L'a') + L" b", {std::wstring(511, L'a') + L" ", 0, 0}},
        {std::wstring(511, L'a') + L"\U0001F600", {std::wstring(511, L'a') + L"\xD83D", 0, 0}},
    });
}

// What is left of the text, and the size that was split off it; -1 where there was none.
void ExpectSplit(std::wstring_view text, bool split, const PinEntry& expected) {
    PinEntry entry{L"", -1, -1};
    std::wstring_view left = text;
    EXPECT_EQ(SplitSizeSuffix(left, entry.minWidth, entry.minHeight), split) << Printed(text);
    entry.pattern = left;
    EXPECT_EQ(Printed(entry), Printed(expected)) << Printed(text);
}

TEST(SplitSizeSuffix, SplitsTheSizeOffUntrimmedText) {
    const EntryCase cases[] = {
        {L"Foo 5 6  \t ", {L"Foo", 5, 6}},
        {L" Foo 5 6", {L"Foo", 5, 6}},
        {L"Foo 5 6\u3000", {L"Foo", 5, 6}},
        {L"Foo 5 6\r", {L"Foo", 5, 6}},
        {L" Foo \t5\t6 ", {L"Foo", 5, 6}},
        // Only the form with blanks requires a pattern.
        {L"\t5\t6", {L"", 5, 6}},
        {L" \t5\t6", {L"", 5, 6}},
        {L"\t 5\t6", {L"", 5, 6}},
        {L"\t5\v\t6", {L"", 5, 6}},
        {L"\t5\t\u30006 ", {L"", 5, 6}},
    };
    for (const auto& [text, entry] : cases) {
        ExpectSplit(text, true, entry);
    }
}

TEST(SplitSizeSuffix, ChangesNothingWhenThereIsNoSize) {
    for (const std::wstring_view text :
         {L"", L" ", L" \t ", L"5", L" 5 6 ", L"\u3000 5 6", L"Foo 5", L"Foo\t5", L"Foo\t1280\t",
          L"\t\t5", L"Foo 99999 x", L"Foo x 99999"}) {
        ExpectSplit(text, false, {std::wstring(text), -1, -1});
    }
}

}  // namespace

}  // namespace morvane::test
