#include "settings/text.h"

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cwctype>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "support/printed.h"

namespace morvane::test {

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr wchar_t Replacement = L'\uFFFD';
constexpr std::uint32_t UnitCount = 0x10000;

// A length that becomes 3 when converted to int.
constexpr std::size_t BeyondInt = (std::size_t{1} << 32U) + 3;

struct SameTextCase {
    std::string_view bytes;
    std::wstring_view text;
};

constexpr SameTextCase SameTexts[] = {
    {"", L""},
    {"a", L"a"},
    {"Visual Studio Code\t1280\t720", L"Visual Studio Code\t1280\t720"},
    {"\x7F\xC2\x80", L"\u007F\u0080"},
    {"\xC3\x84\xC3\xA9", L"\u00C4\u00E9"},
    {"\xDF\xBF\xE0\xA0\x80", L"\u07FF\u0800"},
    {"\xE3\x80\x80", L"\u3000"},
    {"\xED\x9F\xBF\xEE\x80\x80", L"\xD7FF\xE000"},
    {"\xEF\xBB\xBF"
     "a",
     L"\uFEFF"
     L"a"},
    {"\xEF\xBF\xBF", L"\xFFFF"},
    {"\xF0\x90\x80\x80", L"\xD800\xDC00"},
    {"\xF0\x9F\x98\x80", L"\xD83D\xDE00"},
    {"\xF4\x8F\xBF\xBF", L"\xDBFF\xDFFF"},
    {"\0"sv, L"\0"sv},
    {"a\0b\0"sv, L"a\0b\0"sv},
};

TEST(Conversions, KeepWellFormedText) {
    for (const auto& [bytes, text] : SameTexts) {
        EXPECT_EQ(Printed(Utf8ToWide(bytes)), Printed(text));
        EXPECT_EQ(Printed(WideToUtf8(text)), Printed(bytes));
    }
}

TEST(Conversions, ReturnNothingForMoreThanThePlatformCanCount) {
    EXPECT_EQ(Utf8ToWide({"abc", BeyondInt}), L"");
    EXPECT_EQ(WideToUtf8({L"abc", BeyondInt}), "");
}

// The expected text leaves out the replacement characters: their number per ill-formed sequence
// depends on the platform.
constexpr SameTextCase IllFormedTexts[] = {
    {"\xFF", L""},                  // never valid
    {"\x80", L""},                  // a continuation alone
    {"a\xFF(b", L"a(b"},            //
    {"a\xC3(b", L"a(b"},            // a first byte without its continuation
    {"ab\xC3", L"ab"},              // cut off at the end
    {"ab\xE2\x82", L"ab"},          //
    {"ab\xF0\x9F\x98", L"ab"},      //
    {"(\xC0\xAF)", L"()"},          // overlong
    {"(\xE0\x80\xAF)", L"()"},      //
    {"(\xED\xA0\x80)", L"()"},      // a surrogate
    {"(\xF4\x90\x80\x80)", L"()"},  // beyond U+10FFFF
    {"(\xF8\x88\x80\x80\x80)", L"()"},
    {"(\x80\0\x80)"sv, L"(\0)"sv},
};

TEST(Utf8ToWide, ReplacesIllFormedBytesAndKeepsTheRest) {
    for (const auto& [bytes, rest] : IllFormedTexts) {
        std::wstring text = Utf8ToWide(bytes);
        EXPECT_GE(std::erase(text, Replacement), 1U) << Printed(bytes);
        EXPECT_EQ(Printed(text), Printed(rest)) << Printed(bytes);
    }
}

TEST(Utf8ToWideIntoABuffer, KeepsNothingOfEarlierTexts) {
    std::wstring buffer;
    const auto expect = [&buffer](std::string_view bytes, std::wstring_view text) {
        EXPECT_EQ(Printed(Utf8ToWide(bytes, buffer)), Printed(text)) << Printed(bytes);
    };
    for (const auto& [bytes, text] : SameTexts) {
        expect(bytes, text);
    }
    // Longer than the buffer, then shorter than its content, then longer again.
    for (const std::size_t length : {600U, 3U, 511U, 512U, 513U, 5000U, 1U, 0U}) {
        expect(std::string(length, 'x'), std::wstring(length, L'x'));
    }
    // Each byte gets its own replacement: as many units as bytes.
    expect(std::string(9000, '\xFF'), std::wstring(9000, Replacement));
    expect({"abc", BeyondInt}, L"");
}

TEST(WideToUtf8, ReplacesUnpairedSurrogates) {
    constexpr SameTextCase Cases[] = {
        {"\xEF\xBF\xBD", L"\xD83D"},
        {"\xEF\xBF\xBD", L"\xDE00"},
        {"a\xEF\xBF\xBD(", L"a\xD83D("},
        {"\xEF\xBF\xBD\xEF\xBF\xBD", L"\xDE00\xD83D"},
        {"\xEF\xBF\xBD\xF0\x9F\x98\x80", L"\xD83D\xD83D\xDE00"},
    };
    for (const auto& [bytes, text] : Cases) {
        EXPECT_EQ(Printed(WideToUtf8(text)), Printed(bytes)) << Printed(text);
    }
}

TEST(Conversions, KeepEveryCharacterOfTheBasicPlane) {
    std::wstring text;
    for (std::uint32_t unit = 0; unit < UnitCount; ++unit) {
        if (unit < 0xD800 || unit > 0xDFFF) {
            text += static_cast<wchar_t>(unit);
        }
    }
    // One byte up to 7F, two up to 7FF, three for the rest, surrogates excluded.
    const std::string bytes = WideToUtf8(text);
    EXPECT_EQ(bytes.size(), 0x80U + 2U * 0x780U + 3U * (0xF800U - 0x800U));
    EXPECT_TRUE(Utf8ToWide(bytes) == text);
}

TEST(IsWhiteSpace, IsSixAsciiCharactersUpToTheEndOfLatin1) {
    constexpr std::wstring_view Spaces = L"\t\n\v\f\r ";
    for (std::uint32_t unit = 0; unit <= 0xFF; ++unit) {
        const wchar_t c = static_cast<wchar_t>(unit);
        EXPECT_EQ(IsWhiteSpace(c), Spaces.find(c) != std::wstring_view::npos) << unit;
    }
}

TEST(IsWhiteSpace, FollowsTheRuntimeBeyondLatin1) {
    for (std::uint32_t unit = 0x100; unit < UnitCount; ++unit) {
        const wchar_t c = static_cast<wchar_t>(unit);
        EXPECT_EQ(IsWhiteSpace(c), std::iswspace(c) != 0) << unit;
    }
    EXPECT_TRUE(IsWhiteSpace(L'\u2003'));
    EXPECT_TRUE(IsWhiteSpace(L'\u3000'));
    EXPECT_FALSE(IsWhiteSpace(L'\uFFFD'));
}

TEST(Trimming, RemovesWhiteSpaceFromBothEndsOnly) {
    constexpr std::pair<std::wstring_view, std::wstring_view> Cases[] = {
        {L"", L""},
        {L" ", L""},
        {L"   ", L""},
        {L" \t\r\n\v\f\u3000", L""},
        {L"a", L"a"},
        {L" a", L"a"},
        {L"a ", L"a"},
        {L"a b", L"a b"},
        {L"\t a b \r", L"a b"},
        {L"\u3000a\u3000b\u3000", L"a\u3000b"},
        {L"\u00A0a\u00A0", L"\u00A0a\u00A0"},
        {L"\u0085a\u0085", L"\u0085a\u0085"},
        {L" \0a\0 "sv, L"\0a\0"sv},
    };
    for (const auto& [text, trimmed] : Cases) {
        EXPECT_EQ(Printed(TrimWhitespace(text)), Printed(trimmed)) << Printed(text);
        EXPECT_EQ(Printed(TrimmedView(text)), Printed(trimmed)) << Printed(text);
    }
    constexpr std::wstring_view Text = L"  ab ";
    EXPECT_EQ(TrimmedView(Text).data(), Text.data() + 2);
}

TEST(ToLowerCopy, ChangesTheCapitalsOfAsciiOnly) {
    for (std::uint32_t unit = 0; unit < UnitCount; ++unit) {
        const wchar_t c = static_cast<wchar_t>(unit);
        const bool capital = unit >= 'A' && unit <= 'Z';
        const wchar_t expected = capital ? static_cast<wchar_t>(unit + 0x20) : c;
        EXPECT_EQ(ToLowerCopy({&c, 1})[0], expected) << unit;
    }
    EXPECT_EQ(ToLowerCopy(L"\u00C4BC"), L"\u00C4bc");
    EXPECT_EQ(ToLowerCopy(L""), L"");
    EXPECT_EQ(Printed(ToLowerCopy(L"A\0B"sv)), Printed(L"a\0b"sv));
}

TEST(ToLowerCopy, IgnoresTheLocaleOfTheRuntime) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    ASSERT_NE(std::setlocale(LC_ALL, "German_Germany.1252"), nullptr);
    const std::wstring folded = ToLowerCopy(L"\u00C4\u0416A");
    const bool equal = EqualsIgnoreCase(L"\u00C4", L"\u00E4");
    std::setlocale(LC_ALL, before.c_str());
    EXPECT_EQ(Printed(folded), Printed(L"\u00C4\u0416a"));
    EXPECT_FALSE(equal);
}

TEST(EqualsIgnoreCase, ComparesUnitByUnitWithoutAsciiCase) {
    struct Case {
        std::wstring_view a;
        std::wstring_view b;
        bool equal;
    };
    constexpr Case Cases[] = {
        {L"", L"", true},
        {L"", L"a", false},
        {L"OFF", L"off", true},
        {L"oFf", L"OfF", true},
        {L"off", L"of", false},
        {L"of", L"off", false},
        {L"off", L"of ", false},
        {L"@[`{", L"`{@[", false},  // next to the letters
        {L"@", L"`", false},
        {L"[", L"{", false},
        {L"Stra\u00DFe", L"STRASSE", false},
        {L"Stra\u00DFe", L"STRA\u00DFE", true},
        {L"\u00C4", L"\u00E4", false},
        {L"\u212A", L"k", false},  // the Kelvin sign
        {L"\u0130", L"i", false},
        {L"\uFF21", L"\uFF41", false},
        {L"A\0B"sv, L"a\0b"sv, true},
        {L"a\0b"sv, L"a\0c"sv, false},
    };
    for (const auto& [a, b, equal] : Cases) {
        EXPECT_EQ(EqualsIgnoreCase(a, b), equal) << Printed(a) << " and " << Printed(b);
    }
}

TEST(FormatSize, WritesPlainDecimals) {
    struct Case {
        std::int32_t width;
        std::int32_t height;
        std::wstring_view text;
    };
    constexpr std::int32_t Lowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t Highest = std::numeric_limits<std::int32_t>::max();
    constexpr Case Cases[] = {
        {1280, 720, L"1280 x 720"},
        {0, 0, L"0 x 0"},
        {-5, 0, L"-5 x 0"},
        {0, -5, L"0 x -5"},
        {9000, 600, L"9000 x 600"},
        {1000000, 10, L"1000000 x 10"},
        {Lowest, Highest, L"-2147483648 x 2147483647"},
    };
    for (const auto& [width, height, text] : Cases) {
        EXPECT_EQ(Printed(FormatSize(width, height)), Printed(text));
    }
    EXPECT_EQ(FormatInteger(Lowest), "-2147483648");
}

TEST(TruncateWithEllipsis, CutsLongTextToTheExactLength) {
    struct Case {
        std::wstring text;
        std::size_t maxLength;
        std::wstring cut;
    };
    const Case cases[] = {
        {L"", 80, L""},
        {std::wstring(79, L'a'), 80, std::wstring(79, L'a')},
        {std::wstring(80, L'a'), 80, std::wstring(80, L'a')},
        {std::wstring(81, L'a'), 80, std::wstring(77, L'a') + L"..."},
        {std::wstring(511, L'a'), 80, std::wstring(77, L'a') + L"..."},
        {L"abcdefgh", 7, L"abcd..."},
        {L"abcdef", 4, L"a..."},
        {L"abc  xyz", 7, L"abc ..."},               // blanks are not trimmed
        {L"abc\U0001F600xyz", 7, L"abc\xD83D..."},  // half a pair is accepted
        {L"a\0bcdef"s, 5, L"a\0..."s},
        {L"abcd", 3, L"..."},
        {L"abc", 3, L"abc"},
        {L"abcd", 2, L".."},
        {L"abcd", 1, L"."},
        {L"abcd", 0, L""},
        {L"", 0, L""},
    };
    for (const auto& [text, maxLength, cut] : cases) {
        EXPECT_EQ(Printed(TruncateWithEllipsis(text, maxLength)), Printed(cut))
            << Printed(text) << " to " << maxLength;
    }
}

}  // namespace

}  // namespace morvane::test
