#include "i18n/strings.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <string_view>

#include "i18n/language.h"
#include "unit/expected_texts.h"
#include "unit/language_setting.h"
#include "unit/printed.h"

namespace morvane::test {

namespace {

using namespace std::string_view_literals;

// A code for each language, in the order of the enumeration.
constexpr const wchar_t* LanguageCodes[LanguageCount] = {
    L"en-us", L"ja-jp", L"zh-cn", L"zh-tw", L"ko-kr",
    L"es-es", L"fr-fr", L"de-de", L"pt-br", L"ru-ru",
};

const wchar_t* CodeOf(Language language) {
    return LanguageCodes[static_cast<std::size_t>(language)];
}

constexpr StringId IdsOutsideTheTable[] = {
    StringCount,
    StringId{-1},
    StringId{StringCount + 1},
    StringId{1000},
    StringId{std::numeric_limits<int>::min()},
    StringId{std::numeric_limits<int>::max()},
};

int PlaceholderCount(std::wstring_view text) {
    constexpr std::wstring_view Placeholder = L"{0}";
    int count = 0;
    for (std::size_t at = text.find(Placeholder); at != std::wstring_view::npos;
         at = text.find(Placeholder, at + Placeholder.size())) {
        ++count;
    }
    return count;
}

TEST(GetText, ReturnsEveryTextInEveryLanguage) {
    bool seen[StringCount][LanguageCount] = {};
    for (const ExpectedText& expected : ExpectedTexts()) {
        SCOPED_TRACE(std::string(expected.name) + " in " + Printed(CodeOf(expected.language)));
        const LanguageSetting setting(CodeOf(expected.language));
        ASSERT_EQ(CurrentLanguage(), expected.language);
        EXPECT_EQ(Printed(GetText(expected.id)), Printed(expected.text));
        seen[expected.id][static_cast<std::size_t>(expected.language)] = true;
    }
    for (int id = 0; id < StringCount; ++id) {
        for (int language = 0; language < LanguageCount; ++language) {
            EXPECT_TRUE(seen[id][language]) << "text " << id << " in language " << language;
        }
    }
}

TEST(GetText, ReturnsTheEmptyTextForAnIdOutsideTheTable) {
    for (const wchar_t* const code : LanguageCodes) {
        SCOPED_TRACE(Printed(code));
        const LanguageSetting setting(code);
        for (const StringId id : IdsOutsideTheTable) {
            ASSERT_NE(GetText(id), nullptr) << id;
            EXPECT_EQ(Printed(GetText(id)), Printed(L"")) << id;
            EXPECT_EQ(Printed(FormatText(id, L"x")), Printed(L"")) << id;
        }
    }
}

TEST(GetText, ReturnsTextThatStaysInPlace) {
    const LanguageSetting german(L"de");
    const wchar_t* const text = GetText(StrClose);
    const LanguageSetting english(L"en");
    EXPECT_EQ(Printed(text), Printed(L"Schlie\u00DFen"));
    EXPECT_EQ(Printed(GetText(StrClose)), Printed(L"Close"));
}

TEST(GetText, EndsTheActivePrefixWithOneBlankInEveryLanguage) {
    for (const wchar_t* const code : LanguageCodes) {
        SCOPED_TRACE(Printed(code));
        const LanguageSetting setting(code);
        const std::wstring_view prefix = GetText(StrActivePrefix);
        ASSERT_GT(prefix.size(), 2U);
        EXPECT_EQ(Printed(prefix.substr(prefix.size() - 2)), Printed(L": "));
    }
    const LanguageSetting french(L"fr");
    EXPECT_EQ(Printed(GetText(StrActivePrefix)), Printed(L"Fen\u00EAtre active : "));
}

TEST(GetText, HasOnePlaceholderInTheTwoTextsThatTakeAnArgument) {
    for (const wchar_t* const code : LanguageCodes) {
        SCOPED_TRACE(Printed(code));
        const LanguageSetting setting(code);
        for (int number = 0; number < StringCount; ++number) {
            const auto id = static_cast<StringId>(number);
            const std::wstring_view text = GetText(id);
            const bool takesArgument = id == StrMinSizeSet || id == StrAboutVersion;
            EXPECT_EQ(PlaceholderCount(text), takesArgument ? 1 : 0) << Printed(text);
        }
    }
}

TEST(FormatText, ReplacesThePlaceholderWithTheArgument) {
    struct Case {
        const wchar_t* code;
        StringId id;
        std::wstring_view argument;
        std::wstring_view text;
    };
    constexpr Case Cases[] = {
        {L"de", StrMinSizeSet, L"1280 x 720", L"Mindestgr\u00F6\u00DFe auf 1280 x 720 festgelegt."},
        {L"en", StrMinSizeSet, L"1280 x 720", L"Minimum size set to 1280 x 720."},
        {L"en", StrMinSizeSet, L"", L"Minimum size set to ."},
        {L"en", StrMinSizeSet, L"{0}", L"Minimum size set to {0}."},
        {L"en", StrMinSizeSet, L"{0}{0}", L"Minimum size set to {0}{0}."},
        {L"en", StrMinSizeSet, L"{1}", L"Minimum size set to {1}."},
        {L"en", StrMinSizeSet, L"a\0b"sv, L"Minimum size set to a\0b."sv},
        {L"ko", StrMinSizeSet, L"5 x 6",
         L"\uCD5C\uC18C \uD06C\uAE30\uB97C 5 x 6(\uC73C)\uB85C \uC9C0\uC815\uD588\uC2B5\uB2C8"
         L"\uB2E4."},
        {L"en", StrAboutVersion, L"26.9.12.2157", L"Version: 26.9.12.2157"},
        {L"fr", StrAboutVersion, L"1.2", L"Version : 1.2"},
        {L"ru", StrMinSizeSet, L"5 x 6",
         L"\u041C\u0438\u043D\u0438\u043C\u0430\u043B\u044C\u043D\u044B\u0439 "
         L"\u0440\u0430\u0437\u043C\u0435\u0440: 5 x 6."},
        // Without a placeholder the argument is ignored.
        {L"en", StrExit, L"x", L"Exit"},
        {L"en", StrActivePrefix, L"x", L"Active: "},
        {L"ja", StrAppName, L"{0}", L"Morvane"},
    };
    for (const Case& c : Cases) {
        SCOPED_TRACE(Printed(c.code) + " and " + Printed(c.text));
        const LanguageSetting setting(c.code);
        EXPECT_EQ(Printed(FormatText(c.id, c.argument)), Printed(c.text));
    }
    const LanguageSetting setting(L"en");
    const std::wstring longText(100'000, L'x');
    EXPECT_EQ(FormatText(StrAboutVersion, longText), L"Version: " + longText);
}

}  // namespace

}  // namespace morvane::test
