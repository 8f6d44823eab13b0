#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "settings/settings_text.h"
#include "settings/text.h"
#include "unit/generated.h"
#include "unit/printed.h"

namespace morvane::test {

namespace {

using namespace std::string_view_literals;

constexpr std::uint32_t DocumentCount = 400;

// Runs a check with a generator for each seed up to count, until the first failure.
template <typename Check>
void ForEachSeed(std::uint32_t count, const Check& check) {
    for (std::uint32_t seed = 1; seed <= count && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Generator generator(seed);
        check(generator);
    }
}

// Everything in the format, and things it does not expect, in any order.
std::string AnyDocument(Generator& generator) {
    static const std::string longText(600, 'x');
    // clang-format off
    const std::string_view parts[] = {
        "\n", "\n", "\n", "\r\n", "\r", " ", " ", "  ", "\t", "\t", "\v", "\xE3\x80\x80", "\xC2\xA0",
        "#", "\n#", "@pinning", "@PINNING=", "=", "0", "0", "1", "off",
        "notepad", "Visual Studio", "x", "A", longText, "\xC3\xA9", "\xF0\x9F\x98\x80",
        "1280", "720", "0800", "99999", "-5", "4294967296", " 5 6\n", "\t5\t6\n",
        "\xFF", "\xE2", "\xEF\xBB\xBF", "\0"sv,
    };
    // clang-format on
    // Sometimes long enough to exceed the limit on entries.
    const std::size_t partLimit = generator.Below(16) == 0 ? 1200 : 60;
    std::string document;
    for (std::size_t count = generator.Below(partLimit); count > 0; --count) {
        document += generator.OneOf(parts);
    }
    return document;
}

std::int32_t AnySize(Generator& generator) {
    switch (generator.Below(4)) {
        case 0:
            return generator.Between(1, 15);
        case 1:
            return generator.Between(0, MaxMinSize);
        default:
            return 0;
    }
}

// A list that survives a round trip: no pattern reads as something else.
PinList AnyKeptList(Generator& generator) {
    constexpr std::wstring_view Words[] = {L"notepad",    L"Visual Studio", L"\u00C9t\u00E9", L"x",
                                           L"\U0001F600", L"a\rb",          L"\u3000\u7A93.", L"#",
                                           L"5 6"};
    PinList list;
    list.pinning = generator.Below(2) == 0;
    for (std::size_t count = generator.Below(MaxPinEntries + 1); count > 0; --count) {
        PinEntry entry{L"n"};
        entry.minWidth = AnySize(generator);
        entry.minHeight = AnySize(generator);
        for (std::size_t words = generator.Below(5); words > 0; --words) {
            entry.pattern += L' ';
            entry.pattern += generator.OneOf(Words);
        }
        entry.pattern += L'.';
        list.entries.push_back(entry);
    }
    return list;
}

TEST(GeneratedSettings, StayWithinTheLimits) {
    ForEachSeed(DocumentCount, [&](Generator& generator) {
        const std::string document = AnyDocument(generator);
        const PinList list = ParseSettingsText(document);
        ASSERT_LE(list.entries.size(), MaxPinEntries);
        for (const PinEntry& entry : list.entries) {
            ASSERT_FALSE(entry.pattern.empty());
            ASSERT_LE(entry.pattern.size(), MaxPatternLength);
            ASSERT_FALSE(IsWhiteSpace(entry.pattern.front())) << Printed(entry);
            ASSERT_TRUE(entry.pattern.size() == MaxPatternLength ||
                        !IsWhiteSpace(entry.pattern.back()))
                << Printed(entry);
            ASSERT_EQ(entry.pattern.find(L'\n'), std::wstring::npos) << Printed(entry);
            ASSERT_EQ(std::clamp(entry.minWidth, 0, MaxMinSize), entry.minWidth);
            ASSERT_EQ(std::clamp(entry.minHeight, 0, MaxMinSize), entry.minHeight);
        }
    });
}

TEST(GeneratedSettings, AreWrittenAsOneLinePerEntryAndFiveMore) {
    const std::string header = FormatSettingsText({});
    const std::size_t switchPosition = header.rfind("@pinning=");
    ASSERT_NE(switchPosition, std::string::npos);
    ForEachSeed(DocumentCount, [&](Generator& generator) {
        const std::string document = AnyDocument(generator);
        const PinList list = ParseSettingsText(document);
        const std::string text = FormatSettingsText(list);
        ASSERT_EQ(text.substr(0, switchPosition), header.substr(0, switchPosition));
        ASSERT_EQ(text.substr(switchPosition, 11), list.pinning ? "@pinning=1\n" : "@pinning=0\n");
        ASSERT_EQ(text.back(), '\n');
        ASSERT_EQ(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')),
                  5 + list.entries.size());
    });
}

// Patterns that read as something else change at the next reading, but every change removes
// something: after a few readings the file no longer changes.
TEST(GeneratedSettings, SettleAfterAFewRoundTrips) {
    constexpr int Few = 20;
    ForEachSeed(DocumentCount, [&](Generator& generator) {
        const std::string document = AnyDocument(generator);
        std::string text = FormatSettingsText(ParseSettingsText(document));
        int readings = 0;
        for (std::string again; (again = FormatSettingsText(ParseSettingsText(text))) != text;) {
            ASSERT_LE(again.size(), text.size());
            ASSERT_LT(++readings, Few) << Printed(text) << " became " << Printed(again);
            text = again;
        }
        const PinList settled = ParseSettingsText(text);
        ASSERT_EQ(Printed(ParseSettingsText(FormatSettingsText(settled))), Printed(settled));
    });
}

TEST(GeneratedSettings, ComeBackAsTheyWereWritten) {
    ForEachSeed(DocumentCount / 4, [&](Generator& generator) {
        const PinList list = AnyKeptList(generator);
        const std::string text = FormatSettingsText(list);
        ASSERT_EQ(Printed(ParseSettingsText(text)), Printed(list));
        ASSERT_EQ(FormatSettingsText(ParseSettingsText(text)), text);
    });
}

TEST(GeneratedSettings, ReadTheSameWithEitherLineEnd) {
    ForEachSeed(DocumentCount, [&](Generator& generator) {
        std::string document = AnyDocument(generator);
        std::erase(document, '\r');
        std::string withReturns;
        for (const char byte : document) {
            withReturns += byte == '\n' ? "\r\n" : std::string(1, byte);
        }
        ASSERT_EQ(Printed(ParseSettingsText(withReturns)), Printed(ParseSettingsText(document)));
    });
}

TEST(GeneratedSettings, ReadLineByLine) {
    ForEachSeed(DocumentCount, [&](Generator& generator) {
        const std::string first = AnyDocument(generator);
        const std::string second = AnyDocument(generator);
        PinList expected = ParseSettingsText(first);
        for (const PinEntry& entry : ParseSettingsText(second).entries) {
            if (expected.entries.size() < MaxPinEntries) {
                expected.entries.push_back(entry);
            }
        }
        // The switch line between the two restores the default that the second starts from.
        expected.pinning = ParseSettingsText(second).pinning;
        ASSERT_EQ(Printed(ParseSettingsText(first + "\n@pinning=1\n" + second)), Printed(expected));
    });
}

// An independent parser of entry lines whose only white space is blanks and TABs. It splits them
// into words.
PinEntry EntryOfWords(std::wstring_view line) {
    const auto isNumber = [](std::wstring_view word) {
        return !word.empty() && word.find_first_not_of(L"0123456789") == std::wstring_view::npos;
    };
    const auto valueOf = [](std::wstring_view word) {
        word.remove_prefix(std::min(word.find_first_not_of(L'0'), word.size()));
        if (word.empty()) {
            return std::int32_t{0};
        }
        return word.size() > 4 ? MaxMinSize : std::min(MaxMinSize, std::stoi(std::wstring(word)));
    };
    const auto stripped = [](std::wstring_view text) {
        const std::size_t begin = text.find_first_not_of(L" \t");
        const std::size_t end = text.find_last_not_of(L" \t");
        return begin == std::wstring_view::npos ? L""sv : text.substr(begin, end - begin + 1);
    };
    line = stripped(line);
    const std::size_t tabOne = line.find(L'\t');
    const std::size_t tabTwo =
        tabOne == std::wstring_view::npos ? tabOne : line.find(L'\t', tabOne + 1);
    if (tabTwo != std::wstring_view::npos) {
        const std::wstring_view width = stripped(line.substr(tabOne, tabTwo - tabOne));
        const std::wstring_view height = stripped(line.substr(tabTwo));
        if (isNumber(width) && isNumber(height)) {
            return {std::wstring(stripped(line.substr(0, tabOne))), valueOf(width),
                    valueOf(height)};
        }
    }
    std::vector<std::wstring_view> words;
    for (std::wstring_view rest = line; !rest.empty();) {
        const std::wstring_view word = rest.substr(0, rest.find_first_of(L" \t"));
        words.push_back(word);
        rest = stripped(rest.substr(word.size()));
    }
    const std::size_t count = words.size();
    if (count >= 3 && isNumber(words[count - 2]) && isNumber(words[count - 1])) {
        const auto length = static_cast<std::size_t>(words[count - 2].data() - line.data());
        return {std::wstring(stripped(line.substr(0, length))), valueOf(words[count - 2]),
                valueOf(words[count - 1])};
    }
    return {std::wstring(line), 0, 0};
}

TEST(GeneratedEntryLines, AgreeWithAnIndependentParser) {
    constexpr std::uint32_t LineCount = 5000;
    constexpr std::wstring_view Parts[] = {
        L" ", L" ",   L"  ",    L"\t",     L"\t",     L"0",
        L"5", L"720", L"08192", L"8193",   L"9999",   L"99999999999999",
        L"x", L"-",   L"Foo",   L"\u00E9", L"\uFF11", L"#"};
    ForEachSeed(LineCount, [&](Generator& generator) {
        std::wstring line;
        for (std::size_t count = generator.Below(14); count > 0; --count) {
            line += generator.OneOf(Parts);
        }
        const PinEntry expected = EntryOfWords(line);
        const std::optional<PinEntry> entry = ParseEntryLine(line);
        ASSERT_EQ(entry ? Printed(*entry) : "none",
                  expected.pattern.empty() ? "none" : Printed(expected))
            << Printed(line);
    });
}

}  // namespace

}  // namespace morvane::test
