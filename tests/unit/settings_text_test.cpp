#include "settings/settings_text.h"

#include <algorithm>
#include <cstdint>
#include <cwctype>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/printed.h"
#include "support/settings_header.h"
#include "unit/document_case.h"

namespace morvane::test {

namespace {

using namespace std::string_view_literals;

std::string WithComments(std::string_view rest) {
    return std::string(SettingsHeader).append(rest);
}

std::vector<PinEntry> NumberedEntries(int count) {
    std::vector<PinEntry> entries;
    for (int number = 1; number <= count; ++number) {
        entries.push_back({L"entry" + std::to_wstring(number), 0, 0});
    }
    return entries;
}

std::string NumberedLines(int count) {
    std::string lines;
    for (int number = 1; number <= count; ++number) {
        lines += "entry" + std::to_string(number) + '\n';
    }
    return lines;
}

TEST(ParseSettingsText, GivesTheDefaultListForTextWithoutEntries) {
    constexpr std::string_view Documents[] = {
        "",
        "\n",
        "\n\n\n",
        "\r",
        "\r\n",
        "\r\n\r\n",
        "\r\r\n",
        " \t \n\v\f\r\n",
        "#",
        "#\n",
        "# only\n# comments\r\n#",
        "#@pinning=0\n",
        "# @pinning=0\n#notepad",
        "\xE3\x80\x80\n",
        SettingsHeader,
    };
    for (const std::string_view bytes : Documents) {
        ExpectLists({{std::string(bytes), {true, {}}}});
    }
}

TEST(ParseSettingsText, CutsLinesAtLineFeeds) {
    ExpectLists({
        {"a", {true, {{L"a"}}}},
        {"a\n", {true, {{L"a"}}}},
        {"a\nb", {true, {{L"a"}, {L"b"}}}},
        {"\n\na\n\n\nb\n\n", {true, {{L"a"}, {L"b"}}}},
        {"a\r\nb\r\n", {true, {{L"a"}, {L"b"}}}},
        {"a\r\nb\r", {true, {{L"a"}, {L"b"}}}},
        {"a\nb\r\nc", {true, {{L"a"}, {L"b"}, {L"c"}}}},
        {"a\rb\n", {true, {{L"a\rb"}}}},  // a CR inside a line does not end it
        {"a\rb\rc\r", {true, {{L"a\rb\rc"}}}},
        {"\ra\n", {true, {{L"a"}}}},
        {"a\vb\fc\n", {true, {{L"a\vb\fc"}}}},
        {"a 5 6\r\nb\t7\t8\r\n", {true, {{L"a", 5, 6}, {L"b", 7, 8}}}},
    });
}

TEST(ParseSettingsText, RecognisesCommentsByTheFirstByteOnly) {
    ExpectLists({
        {"# note\na\n", {true, {{L"a"}}}},
        {"#a\n##b\n#\nc", {true, {{L"c"}}}},
        {"  # note\n", {true, {{L"# note"}}}},
        {"\t#note\n", {true, {{L"#note"}}}},
        {"\r#note\n", {true, {{L"#note"}}}},
        {"\xE3\x80\x80#note\n", {true, {{L"#note"}}}},
        {"a # b\n", {true, {{L"a # b"}}}},
        {"a\t1\t2 # b\n", {true, {{L"a\t1\t2 # b"}}}},
        {"# a\rb\n", {true, {}}},
    });
}

TEST(ParseSettingsText, UsesTheLastSwitchLineWhereverItIs) {
    ExpectLists({
        {"@pinning=0", {false, {}}},
        {"@pinning=0\n", {false, {}}},
        {"@PINNING=False\r\n", {false, {}}},
        {" @pinning= off \n", {false, {}}},
        {"a\n@pinning=0\nb\n", {false, {{L"a"}, {L"b"}}}},
        {"a\nb\n@pinning=0", {false, {{L"a"}, {L"b"}}}},
        {"@pinning=0\n@pinning=1\n", {true, {}}},
        {"@pinning=1\na\n@pinning=off\n", {false, {{L"a"}}}},
        {"@pinning=0\n@pinning=\n", {false, {{L"@pinning="}}}},
        {"@pinning=0\n@pinning = 1\n", {false, {{L"@pinning = 1"}}}},
        {"@pinning=0\n#@pinning=1\n", {false, {}}},
        {"@pinning=0 5 6\n", {true, {}}},
    });
}

TEST(ParseSettingsText, KeepsOrderAndDuplicates) {
    ExpectLists({{"b\na\nB\nb\nb 1 2\n", {true, {{L"b"}, {L"a"}, {L"B"}, {L"b"}, {L"b", 1, 2}}}}});
}

TEST(ParseSettingsText, ReadsUtf8) {
    ExpectLists({{"\xC3\xA9t\xC3\xA9 5 6\n\xE7\xAA\x93\n\xF0\x9F\x98\x80\t7\t8",
                  {true, {{L"\u00E9t\u00E9", 5, 6}, {L"\u7A93"}, {L"\U0001F600", 7, 8}}}}});
}

// The mark is trimmed only if the platform classifies it as white space.
TEST(ParseSettingsText, DoesNotRecogniseAByteOrderMark) {
    const std::wstring mark = std::iswspace(L'\uFEFF') != 0 ? L"" : L"\uFEFF";
    ExpectLists({{"\xEF\xBB\xBF# note\n@pinning=0\na\n", {false, {{mark + L"# note"}, {L"a"}}}}});
    if (!mark.empty()) {
        ExpectLists({
            {"\xEF\xBB\xBF@pinning=0\n", {true, {{mark + L"@pinning=0"}}}},
            {"\xEF\xBB\xBF", {true, {{mark}}}},
        });
        EXPECT_EQ(FormatSettingsText({true, {{mark + L"# note"}}}),
                  WithComments("@pinning=1\n\xEF\xBB\xBF# note\n"));
    }
}

TEST(ParseSettingsText, ReadsUpToAHundredEntries) {
    for (const int count : {99, 100, 101, 102, 250}) {
        ExpectLists({{NumberedLines(count), {true, NumberedEntries(std::min(count, 100))}}});
    }
}

TEST(ParseSettingsText, HonoursASwitchLineAfterTheLastAcceptedEntry) {
    ExpectLists(
        {{"@pinning=off\n" + NumberedLines(150) + "@pinning=on\n", {true, NumberedEntries(100)}}});
    const struct {
        std::string rest;
        bool pinning;
    } cases[] = {
        {"@pinning=0", false},
        {"@pinning=0\n", false},
        {"@pinning=0\r\n", false},
        {"a\n\n \t@PINNING=Off \r\nb", false},
        {"\xE3\x80\x80@pinning=0\n", false},
        {"someone@somewhere\n@pinning=0\n@", false},
        {"@pinning=0\n@pinning=1\n", true},
        {"@pinning=0\n@pinning=\n", false},
        {"@pinning\n=0\n", true},
        {"a @pinning=0\n", true},
        {"#@pinning=0\n", true},
        {"# a\n#\n@\n@@pinning=0", true},
        {"@pinning=0\xFF\n", true},
        {"\xFF@pinning=0\n", true},
    };
    for (const auto& [rest, pinning] : cases) {
        SCOPED_TRACE(Printed(rest));
        ExpectLists({{NumberedLines(100) + rest, {pinning, NumberedEntries(100)}}});
    }
}

TEST(ParseSettingsText, CountsEntriesOnlyTowardsTheLimit) {
    std::string document;
    for (int number = 1; number <= 100; ++number) {
        document += "# comment\n\n  \r\n@pinning=0\nentry" + std::to_string(number) + '\n';
    }
    ExpectLists({{document, {false, NumberedEntries(100)}}});
}

TEST(FormatSettingsText, WritesTheExampleByteForByte) {
    EXPECT_EQ(FormatSettingsText({false, {{L"notepad"}, {L"Visual Studio Code", 1280, 720}}}),
              "# Morvane config (UTF-8)\n"
              "# One entry per line: pattern [min_width min_height]\n"
              "# pattern = title substring (case-insensitive). 0 = no resize.\n"
              "# Example: Visual Studio Code\t1280\t720\n"
              "@pinning=0\n"
              "notepad\n"
              "Visual Studio Code\t1280\t720\n");
}

TEST(FormatSettingsText, WritesOneLinePerEntry) {
    constexpr std::int32_t Lowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t Highest = std::numeric_limits<std::int32_t>::max();
    const std::pair<PinEntry, std::string_view> cases[] = {
        {{L"Notes", 0, 0}, "Notes\n"},
        {{L"Notes", 0, 600}, "Notes\t0\t600\n"},
        {{L"Notes", 600, 0}, "Notes\t600\t0\n"},
        {{L"Notes", 1, 1}, "Notes\t1\t1\n"},
        {{L"Notes", 1, 0}, "Notes\t1\t0\n"},
        {{L"Notes", 0, 1}, "Notes\t0\t1\n"},
        {{L"Notes", 8192, 8192}, "Notes\t8192\t8192\n"},
        // Sizes that never come from a file.
        {{L"Notes", -5, -6}, "Notes\n"},
        {{L"Notes", -5, 0}, "Notes\n"},
        {{L"Notes", -5, 10}, "Notes\t-5\t10\n"},
        {{L"Notes", 10, -5}, "Notes\t10\t-5\n"},
        {{L"Notes", Lowest, Highest}, "Notes\t-2147483648\t2147483647\n"},
        {{L"\u00E9 \u7A93 \U0001F600", 5, 6}, "\xC3\xA9 \xE7\xAA\x93 \xF0\x9F\x98\x80\t5\t6\n"},
        {{L"\xD83D", 0, 0}, "\xEF\xBF\xBD\n"},
        // No quoting and no escaping.
        {{L"#general", 0, 0}, "#general\n"},
        {{L"\"a\\b\"", 0, 0}, "\"a\\b\"\n"},
        {{L" a\tb ", 0, 0}, " a\tb \n"},
        {{L"a\r\nb", 5, 6}, "a\r\nb\t5\t6\n"},
        {{L"@pinning=0", 0, 0}, "@pinning=0\n"},
        {{std::wstring(L"a\0b"sv), 0, 0}, "a\0b\n"sv},
        {{L"", 0, 0}, "\n"},
        {{L"", 5, 6}, "\t5\t6\n"},
    };
    for (const auto& [entry, line] : cases) {
        EXPECT_EQ(Printed(FormatSettingsText({true, {entry}})),
                  Printed(WithComments("@pinning=1\n").append(line)))
            << Printed(entry);
    }
}

TEST(FormatSettingsText, WritesAllEntriesOfALongerListInOrder) {
    EXPECT_EQ(FormatSettingsText({false, NumberedEntries(150)}),
              WithComments("@pinning=0\n") + NumberedLines(150));
}

TEST(SettingsText, IsNormalisedByReadingAndWriting) {
    const std::string document =
        "# my own comment\r\n"
        "\r\n"
        "@PINNING = 0\r\n"
        "@Pinning= FALSE\r\n"
        "  notepad  \r\n"
        "Visual Studio Code   1280    0720\r\n"
        "Foo 0 0\r\n"
        "Wide\t99999\t0\r\n" +
        std::string(600, 'x') + "\r\n  # note";
    EXPECT_EQ(FormatSettingsText(ParseSettingsText(document)),
              WithComments("@pinning=0\n"
                           "@PINNING = 0\n"
                           "notepad\n"
                           "Visual Studio Code\t1280\t720\n"
                           "Foo\n"
                           "Wide\t8192\t0\n") +
                  std::string(512, 'x') + "\n# note\n");
}

// The format has no escape: the next reading takes a pattern's line at face value.
TEST(SettingsText, DoesNotKeepPatternsThatReadAsSomethingElse) {
    const std::pair<PinEntry, PinList> cases[] = {
        {{L"#general", 5, 6}, {true, {}}},
        {{L"Foo\t5\t6", 0, 0}, {true, {{L"Foo", 5, 6}}}},
        {{L"Foo 5 6", 0, 0}, {true, {{L"Foo", 5, 6}}}},
        {{L"Foo 5 6", 7, 8}, {true, {{L"Foo 5 6", 7, 8}}}},
        {{L"  Foo \t", 0, 0}, {true, {{L"Foo"}}}},
        {{L" \t ", 0, 0}, {true, {}}},
        {{L"@pinning=0", 0, 0}, {false, {}}},
        {{L"@pinning=0", 5, 6}, {true, {}}},
        {{L"a\nb", 5, 6}, {true, {{L"a"}, {L"b", 5, 6}}}},
        {{L"a\xD83D", 0, 0}, {true, {{L"a\uFFFD"}}}},
        {{L"Foo", 10000, 1}, {true, {{L"Foo", 8192, 1}}}},
        {{L"Foo", -5, 1}, {true, {{L"Foo\t-5\t1"}}}},
    };
    for (const auto& [written, read] : cases) {
        SCOPED_TRACE(Printed(written));
        ExpectLists({{FormatSettingsText({true, {written}}), read}});
    }
}

}  // namespace

}  // namespace morvane::test
