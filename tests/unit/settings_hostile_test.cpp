#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "settings/settings_text.h"
#include "support/printed.h"
#include "unit/document_case.h"

// Files that no text editor writes: reading them must always give a usable list.
namespace morvane::test {

namespace {

using namespace std::string_literals;

constexpr std::size_t Megabyte = std::size_t{1024} * 1024;

std::string Repeated(std::string_view part, std::size_t count) {
    std::string text;
    text.reserve(part.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        text += part;
    }
    return text;
}

TEST(HostileSettingsText, KeepsNulBytesLikeAnyOtherCharacter) {
    ExpectLists({
        {"\0"s, {true, {{L"\0"s}}}},
        {"\0\0\n\0"s, {true, {{L"\0\0"s}, {L"\0"s}}}},
        {" \0 \n"s, {true, {{L"\0"s}}}},
        {"a\0b 5 6\n"s, {true, {{L"a\0b"s, 5, 6}}}},
        {"a 5 6\0\n"s, {true, {{L"a 5 6\0"s}}}},
        {"\0# note\n"s, {true, {{L"\0# note"s}}}},
        {"@pinning=0\0\n"s, {true, {}}},
        {"\0@pinning=0\n"s, {true, {{L"\0@pinning=0"s}}}},
        {"a\0\r\n@pinning=0\n"s, {false, {{L"a\0"s}}}},
    });
}

// How many replacements an ill-formed sequence becomes depends on the platform.
TEST(HostileSettingsText, ReadsIllFormedUtf8Leniently) {
    struct Case {
        std::string_view bytes;
        PinEntry rest;  // without the replacements
    };
    const Case cases[] = {
        {"\xFF", {L"", 0, 0}},
        {"note\xFFpad 5 6", {L"notepad", 5, 6}},
        {"note\xC3 5 6", {L"note", 5, 6}},
        {"\xE2\x82 note 5 6", {L" note", 5, 6}},
        {"\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80 5 6", {L"", 5, 6}},
        {"\xA3note\t5\t6", {L"note", 5, 6}},  // Latin-1
    };
    for (const auto& [bytes, rest] : cases) {
        SCOPED_TRACE(Printed(bytes));
        PinList list = ParseSettingsText(bytes);
        ASSERT_EQ(list.entries.size(), 1U);
        EXPECT_GT(std::erase(list.entries[0].pattern, L'\uFFFD'), 0U);
        EXPECT_EQ(Printed(list), Printed({true, {rest}}));
    }
    // A sequence cut off by the end of the line does not reach into the next line.
    EXPECT_EQ(ParseSettingsText("a\xE2\x82\nb\n@pinning=0\xFF\n").entries.size(), 2U);
    EXPECT_TRUE(ParseSettingsText("@pinning=0\xFF\n").pinning);
    EXPECT_FALSE(ParseSettingsText("\xFF\n@pinning=0\n").pinning);
}

TEST(HostileSettingsText, ReadsAUtf16FileAsPatternsWithNuls) {
    // "@pinning=0" and "ab", each with CR LF: the NUL after a little-endian LF starts the next
    // line.
    const DocumentCase cases[] = {
        {"\xFF\xFE@\0p\0i\0n\0n\0i\0n\0g\0=\0o\0f\0f\0\r\0\n\0a\0b\0\r\0\n\0"s,
         {true, {{L"@\0p\0i\0n\0n\0i\0n\0g\0=\0o\0f\0f\0\r\0"s}, {L"\0a\0b\0\r\0"s}, {L"\0"s}}}},
        {"\xFE\xFF\0@\0p\0\r\0\n\0a\0b\0\r\0\n"s, {true, {{L"\0@\0p\0\r\0"s}, {L"\0a\0b\0\r\0"s}}}},
    };
    for (const auto& [bytes, expected] : cases) {
        PinList list = ParseSettingsText(bytes);
        ASSERT_FALSE(list.entries.empty());
        std::erase(list.entries[0].pattern, L'\uFFFD');
        EXPECT_EQ(Printed(list), Printed(expected));
    }
}

TEST(HostileSettingsText, ReadsVeryLongLines) {
    const std::wstring most(512, L'x');
    const std::string longLine(Megabyte, 'x');
    ExpectLists({
        {longLine, {true, {{most}}}},
        {"a\n" + longLine + "\t5\t6\nb", {true, {{L"a"}, {most, 5, 6}, {L"b"}}}},
        {"#" + longLine + "\na", {true, {{L"a"}}}},
        {"a" + std::string(Megabyte, ' ') + "5 6", {true, {{L"a", 5, 6}}}},
        {std::string(Megabyte, ' '), {true, {}}},
        {std::string(Megabyte, '\t') + "\na", {true, {{L"a"}}}},
        {"a 5 " + std::string(Megabyte, '9'), {true, {{L"a", 5, 8192}}}},
        {"a " + std::string(Megabyte, '0') + "5 6", {true, {{L"a", 5, 6}}}},
        {"@pinning=0" + longLine, {true, {}}},
        {"@pinning=" + std::string(Megabyte, '\t') + "0", {false, {}}},
    });
}

TEST(HostileSettingsText, ReadsManyLines) {
    constexpr std::size_t Many = 10'000;
    const struct {
        const char* name;
        std::string bytes;
        std::size_t entries;
        bool pinning;
    } cases[] = {
        {"entries", Repeated("notepad 5 6\r\n", Many), 100, true},
        {"entries and a switch", Repeated("x\n", Many) + "@pinning=0", 100, false},
        {"switches", Repeated("@pinning=1\n@pinning=0\n", Many), 0, false},
        {"comments", Repeated("# x\n", Many) + "x", 1, true},
        {"line feeds", std::string(Megabyte, '\n') + "x", 1, true},
        {"carriage returns", std::string(Megabyte, '\r'), 0, true},
        {"both", Repeated("\r\n", Many) + "x\r\n", 1, true},
        {"NUL bytes", std::string(Megabyte, '\0'), 1, true},
        {"meaningless bytes", Repeated("\xFF\n", Many), 100, true},
        {"wide blanks", Repeated("\xE3\x80\x80\n", Many), 0, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const PinList list = ParseSettingsText(c.bytes);
        EXPECT_EQ(list.entries.size(), c.entries);
        EXPECT_EQ(list.pinning, c.pinning);
    }
}

}  // namespace

}  // namespace morvane::test
