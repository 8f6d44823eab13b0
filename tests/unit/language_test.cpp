#include "i18n/language.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <string>

#include "base/win.h"
#include "support/import_patch.h"
#include "unit/language_setting.h"
#include "unit/printed.h"

namespace morvane::test {

namespace {

// Read before main, before any test has chosen a language.
const Language LanguageBeforeTheChoice = CurrentLanguage();

struct CodeCase {
    const wchar_t* code;
    Language language;
};

constexpr CodeCase Codes[] = {
    {L"en", Language::English},
    {L"en-us", Language::English},
    {L"ja", Language::Japanese},
    {L"ja-jp", Language::Japanese},
    {L"zh-cn", Language::ChineseSimplified},
    {L"zh-tw", Language::ChineseTraditional},
    {L"ko", Language::Korean},
    {L"ko-kr", Language::Korean},
    {L"es", Language::Spanish},
    {L"es-es", Language::Spanish},
    {L"fr", Language::French},
    {L"fr-fr", Language::French},
    {L"de", Language::German},
    {L"de-de", Language::German},
    {L"pt", Language::PortugueseBrazil},
    {L"pt-br", Language::PortugueseBrazil},
    {L"ru", Language::Russian},
    {L"ru-ru", Language::Russian},
};

constexpr CodeCase CodesInOtherCase[] = {
    {L"JA-JP", Language::Japanese},
    {L"Ja", Language::Japanese},
    {L"ja-JP", Language::Japanese},
    {L"ZH-TW", Language::ChineseTraditional},
    {L"zh-CN", Language::ChineseSimplified},
    {L"KO", Language::Korean},
    {L"eS", Language::Spanish},
    {L"Fr-FR", Language::French},
    {L"dE-De", Language::German},
    {L"PT-br", Language::PortugueseBrazil},
    {L"RU-RU", Language::Russian},
};

constexpr const wchar_t* UnknownCodes[] = {
    L"",           L" ",
    L"it",         L"zh",
    L"ZH",         L"zh-hk",
    L"zh-sg",      L"zh-hans",
    L"zh-hant",    L"en-gb",
    L"es-mx",      L"pt-pt",
    L"fr-ca",      L"de-at",
    L"ja_jp",      L" ja",
    L"ja ",        L"ja-jp ",
    L"ja-jp-x",    L"ja-",
    L"j",          L"jajp",
    L"-jp",        L"zh_cn",
    L"zhcn",       L"zh-cnn",
    L"zh-c",       L"japanese",
    L"1",          L"\u212Ao",
    L"\uFF4Aa",    L"\u0440\u0443",
    L"ja-jpja-jp", L"xx-xxxxxxxxxxx",
};

TEST(Language, IsNumberedLikeTheColumnsOfTheTable) {
    EXPECT_EQ(LanguageCount, 10);
    EXPECT_EQ(static_cast<int>(Language::English), 0);
    EXPECT_EQ(static_cast<int>(Language::Japanese), 1);
    EXPECT_EQ(static_cast<int>(Language::ChineseSimplified), 2);
    EXPECT_EQ(static_cast<int>(Language::ChineseTraditional), 3);
    EXPECT_EQ(static_cast<int>(Language::Korean), 4);
    EXPECT_EQ(static_cast<int>(Language::Spanish), 5);
    EXPECT_EQ(static_cast<int>(Language::French), 6);
    EXPECT_EQ(static_cast<int>(Language::German), 7);
    EXPECT_EQ(static_cast<int>(Language::PortugueseBrazil), 8);
    EXPECT_EQ(static_cast<int>(Language::Russian), 9);
}

TEST(ParseLanguageCode, KnowsEveryCode) {
    for (const CodeCase& c : Codes) {
        SCOPED_TRACE(Printed(c.code));
        EXPECT_EQ(ParseLanguageCode(c.code), c.language);
    }
}

TEST(ParseLanguageCode, IgnoresCase) {
    for (const CodeCase& c : CodesInOtherCase) {
        SCOPED_TRACE(Printed(c.code));
        EXPECT_EQ(ParseLanguageCode(c.code), c.language);
    }
}

TEST(ParseLanguageCode, TreatsEverythingElseAsEnglish) {
    EXPECT_EQ(ParseLanguageCode(nullptr), Language::English);
    for (const wchar_t* const code : UnknownCodes) {
        SCOPED_TRACE(Printed(code));
        EXPECT_EQ(ParseLanguageCode(code), Language::English);
    }
}

TEST(LanguageFromIdentifier, IgnoresTheCountryExceptForChinese) {
    struct Case {
        std::uint16_t identifier;
        Language language;
    };
    constexpr Case Cases[] = {
        {0x0404, Language::ChineseTraditional},  // Taiwan
        {0x0804, Language::ChineseSimplified},   // PRC
        {0x0C04, Language::ChineseTraditional},  // Hong Kong SAR
        {0x1004, Language::ChineseSimplified},   // Singapore
        {0x1404, Language::ChineseTraditional},  // Macao SAR
        {0x0004, Language::ChineseSimplified},
        {0x7C04, Language::ChineseSimplified},
        {0x0411, Language::Japanese},
        {0x0412, Language::Korean},
        {0x040A, Language::Spanish},  // Spain
        {0x080A, Language::Spanish},  // Mexico
        {0x040C, Language::French},   // France
        {0x0C0C, Language::French},   // Canada
        {0x0407, Language::German},   // Germany
        {0x0C07, Language::German},   // Austria
        {0x0416, Language::PortugueseBrazil},
        {0x0816, Language::PortugueseBrazil},  // Portugal
        {0x0419, Language::Russian},
        {0x0409, Language::English},
        {0x0809, Language::English},  // United Kingdom
        {0x0410, Language::English},  // Italian
        {0x0415, Language::English},  // Polish
        {0x0000, Language::English},
        {0xFFFF, Language::English},
    };
    for (const Case& c : Cases) {
        SCOPED_TRACE(c.identifier);
        EXPECT_EQ(LanguageFromIdentifier(c.identifier), c.language);
    }
}

TEST(LanguageFromIdentifier, UsesTheLowTenBitsAndForChineseTheHighSix) {
    const std::map<std::uint32_t, Language> languages = {
        {0x04, Language::ChineseSimplified}, {0x07, Language::German},
        {0x0A, Language::Spanish},           {0x0C, Language::French},
        {0x11, Language::Japanese},          {0x12, Language::Korean},
        {0x16, Language::PortugueseBrazil},  {0x19, Language::Russian},
    };
    for (std::uint32_t identifier = 0; identifier <= 0xFFFF; ++identifier) {
        const auto found = languages.find(identifier & 0x3FFU);
        Language expected = found == languages.end() ? Language::English : found->second;
        const std::uint32_t country = identifier >> 10U;
        if (expected == Language::ChineseSimplified &&
            (country == 1 || country == 3 || country == 5)) {
            expected = Language::ChineseTraditional;
        }
        ASSERT_EQ(LanguageFromIdentifier(static_cast<std::uint16_t>(identifier)), expected)
            << identifier;
    }
}

TEST(CurrentLanguage, IsEnglishBeforeOneIsChosen) {
    EXPECT_EQ(LanguageBeforeTheChoice, Language::English);
}

struct DisplayLanguage {
    LANGID identifier;
    Language language;
};

LANGID displayLanguage = 0;

LANGID WINAPI AnswerDisplayLanguage() {
    return displayLanguage;
}

// The language is chosen in a system with this display language.
class InitLanguageTest : public testing::TestWithParam<DisplayLanguage> {
protected:
    InitLanguageTest() : patch_("GetUserDefaultUILanguage", AnswerDisplayLanguage) {
        displayLanguage = GetParam().identifier;
    }

private:
    ImportPatch<decltype(&GetUserDefaultUILanguage)> patch_;
};

TEST_P(InitLanguageTest, UsesTheLanguageOfTheVariable) {
    for (const CodeCase& c : Codes) {
        SCOPED_TRACE(Printed(c.code));
        const LanguageSetting setting(c.code);
        EXPECT_EQ(CurrentLanguage(), c.language);
    }
    for (const CodeCase& c : CodesInOtherCase) {
        SCOPED_TRACE(Printed(c.code));
        const LanguageSetting setting(c.code);
        EXPECT_EQ(CurrentLanguage(), c.language);
    }
}

TEST_P(InitLanguageTest, TreatsEveryOtherValueAsEnglish) {
    const LanguageSetting before(L"ru");
    for (const wchar_t* const code : UnknownCodes) {
        if (*code == L'\0') {
            continue;  // counts as not set
        }
        SCOPED_TRACE(Printed(code));
        const LanguageSetting setting(code);
        EXPECT_EQ(CurrentLanguage(), Language::English);
    }
}

TEST_P(InitLanguageTest, TreatsAnOverlongValueAsEnglish) {
    const LanguageSetting before(L"ru");
    for (const std::size_t length : {14U, 15U, 16U, 17U, 18U, 255U, 256U, 1000U, 32000U}) {
        SCOPED_TRACE(length);
        std::wstring value = L"ja-jp";
        value.resize(length, L'x');
        const LanguageSetting setting(value.c_str());
        EXPECT_EQ(CurrentLanguage(), Language::English);
    }
}

TEST_P(InitLanguageTest, FollowsTheDisplayLanguageWithoutTheVariable) {
    const LanguageSetting before(L"ru");
    for (const wchar_t* const value : {static_cast<const wchar_t*>(nullptr), L""}) {
        const LanguageSetting setting(value);
        EXPECT_EQ(CurrentLanguage(), GetParam().language);
    }
}

INSTANTIATE_TEST_SUITE_P(DisplayLanguages, InitLanguageTest,
                         testing::Values(DisplayLanguage{0x0409, Language::English},
                                         DisplayLanguage{0x0411, Language::Japanese},
                                         DisplayLanguage{0x0C04, Language::ChineseTraditional}),
                         [](const auto& test) { return std::to_string(test.param.identifier); });

}  // namespace

}  // namespace morvane::test
