#include "i18n/strings.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <string_view>

#include "support/languages.h"
#include "support/printed.h"

namespace morvane::test {

namespace {

using namespace std::string_view_literals;

constexpr StringId IdsOutsideTheTable[] = {
    StringCount,
    StringId{-1},
    StringId{StringCount + 1},
    StringId{1000},
    StringId{std::numeric_limits<int>::min()},
    StringId{std::numeric_limits<int>::max()},
};

TEST(GetText, ReturnsEveryTextInEveryLanguage) {
    for (const auto& [language, code, longCode] : AllLanguages) {
        ChooseLanguage(code);
        ASSERT_EQ(CurrentLanguage(), language);
        for (int number = 0; number < StringCount; ++number) {
            const auto id = static_cast<StringId>(number);
            EXPECT_EQ(Printed(GetText(id)), Printed(ExpectedText(id, language)))
                << "text " << number << " in " << Printed(code);
        }
    }
}

TEST(GetText, ReturnsTheEmptyTextForAnIdOutsideTheTable) {
    for (const auto& [language, code, longCode] : AllLanguages) {
        ChooseLanguage(code);
        for (const StringId id : IdsOutsideTheTable) {
            ASSERT_NE(GetText(id), nullptr) << id << " in " << Printed(code);
            EXPECT_EQ(Printed(GetText(id)), Printed(L"")) << id << " in " << Printed(code);
            EXPECT_EQ(Printed(FormatText(id, L"x")), Printed(L"")) << id << " in " << Printed(code);
        }
    }
}

TEST(GetText, ReturnsTextThatStaysInPlace) {
    ChooseLanguage(L"de");
    const wchar_t* const text = GetText(StrClose);
    ChooseLanguage(L"en");
    EXPECT_EQ(Printed(text), Printed(L"Schließen"));
    EXPECT_EQ(Printed(GetText(StrClose)), Printed(L"Close"));
}

TEST(FormatText, ReplacesThePlaceholderOfTheTwoTextsThatHaveOne) {
    for (const auto& [language, code, longCode] : AllLanguages) {
        ChooseLanguage(code);
        for (int number = 0; number < StringCount; ++number) {
            const auto id = static_cast<StringId>(number);
            const bool takesArgument = id == StrMinSizeSet || id == StrAboutVersion;
            EXPECT_EQ(Printed(FormatText(id, L"5 x 6")),
                      Printed(takesArgument ? ExpectedFormat(id, L"5 x 6", language)
                                            : ExpectedText(id, language)))
                << "text " << number << " in " << Printed(code);
        }
    }
}

TEST(FormatText, PutsTheArgumentInVerbatim) {
    struct Case {
        StringId id;
        std::wstring_view argument;
        std::wstring_view text;
    };
    constexpr Case Cases[] = {
        {StrMinSizeSet, L"1280 x 720", L"Minimum size set to 1280 x 720."},
        {StrMinSizeSet, L"", L"Minimum size set to ."},
        {StrMinSizeSet, L"{0}", L"Minimum size set to {0}."},
        {StrMinSizeSet, L"{0}{0}", L"Minimum size set to {0}{0}."},
        {StrMinSizeSet, L"{1}", L"Minimum size set to {1}."},
        {StrMinSizeSet, L"a\0b"sv, L"Minimum size set to a\0b."sv},
        {StrAboutVersion, L"26.9.12.2157", L"Version: 26.9.12.2157"},
    };
    ChooseLanguage(L"en");
    for (const Case& c : Cases) {
        EXPECT_EQ(Printed(FormatText(c.id, c.argument)), Printed(c.text));
    }
    const std::wstring longText(100'000, L'x');
    EXPECT_EQ(FormatText(StrAboutVersion, longText), L"Version: " + longText);
}

}  // namespace

}  // namespace morvane::test
