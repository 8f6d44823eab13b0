#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "settings/settings_text.h"
#include "settings/text.h"
#include "unit/printed.h"

// Files that no text editor writes: reading them must always give a usable list.
namespace morvane::test {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t Megabyte = std::size_t{1024} * 1024;

std::string Repeated(std::string_view part, std::size_t count) {
    std::string text;
    text.reserve(part.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        text += part;
    }
    return text;
}

std::wstring WithoutReplacements(std::wstring text) {
    std::erase(text, L'\uFFFD');
    return text;
}

TEST(HostileSettingsText, KeepsNulBytesLikeAnyOtherCharacter) {
    struct Case {
        std::string_view bytes;
        PinList list;
    };
    const Case cases[] = {
        {"\0"sv, {true, {{std::wstring(1, L'\0')}}}},
        {"\0\0\n\0"sv, {true, {{std::wstring(2, L'\0')}, {std::wstring(1, L'\0')}}}},
        {" \0 \n"sv, {true, {{std::wstring(1, L'\0')}}}},
        {"a\0b 5 6\n"sv, {true, {{std::wstring(L"a\0b"sv), 5, 6}}}},
        {"a 5 6\0\n"sv, {true, {{std::wstring(L"a 5 6\0"sv)}}}},
        {"\0# note\n"sv, {true, {{std::wstring(L"\0# note"sv)}}}},
        {"@pinning=0\0\n"sv, {true, {}}},
        {"\0@pinning=0\n"sv, {true, {{std::wstring(L"\0@pinning=0"sv)}}}},
        {"a\0\r\n@pinning=0\n"sv, {false, {{std::wstring(L"a\0"sv)}}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(Printed(c.bytes));
        EXPECT_EQ(Printed(ParseSettingsText(c.bytes)), Printed(c.list));
    }
}

TEST(HostileSettingsText, ReadsIllFormedUtf8Leniently) {
    struct Case {
        std::string_view bytes;
        std::wstring_view rest;  // the pattern without the replacements
    };
    constexpr Case Cases[] = {
        {"\xFF", L""},
        {"note\xFFpad 5 6", L"notepad"},
        {"note\xC3 5 6", L"note"},
        {"\xE2\x82 note 5 6", L" note"},
        {"\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80 5 6", L""},
        {"\xA3note\t5\t6", L"note"},  // Latin-1
    };
    for (const Case& c : Cases) {
        SCOPED_TRACE(Printed(c.bytes));
        const PinList list = ParseSettingsText(c.bytes);
        ASSERT_EQ(list.entries.size(), 1U);
        const PinEntry& entry = list.entries.front();
        EXPECT_EQ(WithoutReplacements(entry.pattern), c.rest);
        EXPECT_GT(entry.pattern.size(), c.rest.size());
        const bool sized = c.bytes.back() == '6';
        EXPECT_EQ(entry.minWidth, sized ? 5 : 0);
        EXPECT_EQ(entry.minHeight, sized ? 6 : 0);
    }
    // One CR belongs to the line ending; another is converted with the text before it.
    EXPECT_EQ(Printed(ParseSettingsText("a\xE2\r\r\n")),
              Printed({true, {{TrimWhitespace(Utf8ToWide("a\xE2\r"))}}}));
    // A sequence cut off by the end of the line does not reach into the next line.
    EXPECT_EQ(ParseSettingsText("a\xE2\x82\nb\n@pinning=0\xFF\n").entries.size(), 2U);
    EXPECT_TRUE(ParseSettingsText("@pinning=0\xFF\n").pinning);
    EXPECT_FALSE(ParseSettingsText("\xFF\n@pinning=0\n").pinning);
}

TEST(HostileSettingsText, ReadsAUtf16FileAsPatternsWithNuls) {
    // "@pinning=0" and "ab", each with CR LF, little-endian: the NUL after LF starts the next line.
    const PinList little = ParseSettingsText(
        "\xFF\xFE@\0p\0i\0n\0n\0i\0n\0g\0=\0"
        "0\0\r\0\n\0a\0b\0\r\0\n\0"sv);
    EXPECT_TRUE(little.pinning);
    ASSERT_EQ(little.entries.size(), 3U);
    EXPECT_EQ(Printed(WithoutReplacements(little.entries[0].pattern)),
              Printed(L"@\0p\0i\0n\0n\0i\0n\0g\0=\0"
                      L"0\0\r\0"sv));
    EXPECT_EQ(Printed(little.entries[1].pattern), Printed(L"\0a\0b\0\r\0"sv));
    EXPECT_EQ(Printed(little.entries[2].pattern), Printed(L"\0"sv));

    const PinList big = ParseSettingsText("\xFE\xFF\0@\0p\0\r\0\n\0a\0b\0\r\0\n"sv);
    EXPECT_TRUE(big.pinning);
    ASSERT_EQ(big.entries.size(), 2U);
    EXPECT_EQ(Printed(WithoutReplacements(big.entries[0].pattern)), Printed(L"\0@\0p\0\r\0"sv));
    EXPECT_EQ(Printed(big.entries[1].pattern), Printed(L"\0a\0b\0\r\0"sv));
}

TEST(HostileSettingsText, ReadsVeryLongLines) {
    const std::wstring most(MaxPatternLength, L'x');
    const std::string longLine(Megabyte, 'x');
    const struct {
        const char* name;
        std::string bytes;
        PinList list;
    } cases[] = {
        {"a long pattern", longLine, {true, {{most}}}},
        {"with a size and more lines",
         "a\n" + longLine + "\t5\t6\nb",
         {true, {{L"a"}, {most, 5, 6}, {L"b"}}}},
        {"a long comment", "#" + longLine + "\na", {true, {{L"a"}}}},
        {"long blanks", "a" + std::string(Megabyte, ' ') + "5 6", {true, {{L"a", 5, 6}}}},
        {"nothing but blanks", std::string(Megabyte, ' '), {true, {}}},
        {"nothing but TABs", std::string(Megabyte, '\t') + "\na", {true, {{L"a"}}}},
        {"a long number", "a 5 " + std::string(Megabyte, '9'), {true, {{L"a", 5, 8192}}}},
        {"long zeros", "a " + std::string(Megabyte, '0') + "5 6", {true, {{L"a", 5, 6}}}},
        {"a long value", "@pinning=0" + longLine, {true, {}}},
        {"a value far to the right", "@pinning=" + std::string(Megabyte, '\t') + "0", {false, {}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Printed(ParseSettingsText(c.bytes)), Printed(c.list));
    }
}

TEST(HostileSettingsText, ReadsManyLines) {
    constexpr std::size_t Many = 10'000;
    const struct {
        const char* name;
        std::string bytes;
        std::size_t entries;
        bool pinning;
    } cases[] = {
        {"entries", Repeated("notepad 5 6\r\n", Many), MaxPinEntries, true},
        {"entries and a switch", Repeated("x\n", Many) + "@pinning=0", MaxPinEntries, false},
        {"switches", Repeated("@pinning=1\n@pinning=0\n", Many), 0, false},
        {"comments", Repeated("# x\n", Many) + "x", 1, true},
        {"line feeds", std::string(Megabyte, '\n') + "x", 1, true},
        {"carriage returns", std::string(Megabyte, '\r'), 0, true},
        {"both", Repeated("\r\n", Many) + "x\r\n", 1, true},
        {"NUL bytes", std::string(Megabyte, '\0'), 1, true},
        {"meaningless bytes", Repeated("\xFF\n", Many), MaxPinEntries, true},
        {"wide blanks", Repeated("\xE3\x80\x80\n", Many), 0, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const PinList list = ParseSettingsText(c.bytes);
        EXPECT_EQ(list.entries.size(), c.entries);
        EXPECT_EQ(list.pinning, c.pinning);
    }
}

TEST(HostileSettingsText, ReadsEverySingleByte) {
    constexpr std::string_view Nothing = "\t\n\v\f\r #";
    for (int value = 0; value <= 0xFF; ++value) {
        const std::string bytes(1, static_cast<char>(value));
        const PinList list = ParseSettingsText(bytes);
        EXPECT_TRUE(list.pinning) << value;
        EXPECT_EQ(list.entries.empty(), Nothing.find(bytes) != std::string_view::npos) << value;
    }
}

}  // namespace

}  // namespace morvane::test
