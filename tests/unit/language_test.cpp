#include "i18n/language.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "base/win.h"
#include "support/import_patch.h"
#include "support/languages.h"
#include "support/printed.h"

namespace morvane::test {

namespace {

// Read before main, before any test has chosen a language.
const Language LanguageBeforeTheChoice = CurrentLanguage();

// Code and language.
std::vector<std::pair<const wchar_t*, Language>> KnownCodes() {
    std::vector<std::pair<const wchar_t*, Language>> codes = {
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
    for (const auto& [language, code, longCode] : AllLanguages) {
        codes.emplace_back(code, language);
        codes.emplace_back(longCode, language);
    }
    return codes;
}

constexpr const wchar_t* UnknownCodes[] = {
    L" ",
    L"it",
    L"zh",
    L"ZH",
    L"zh-hk",
    L"zh-sg",
    L"zh-hans",
    L"zh-hant",
    L"en-gb",
    L"es-mx",
    L"pt-pt",
    L"fr-ca",
    L"de-at",
    L"ja_jp",
    L" ja",
    L"ja ",
    L"ja-jp ",
    L"ja-jp-x",
    L"ja-",
    L"j",
    L"jajp",
    L"-jp",
    L"zh_cn",
    L"zhcn",
    L"zh-cnn",
    L"zh-c",
    L"japanese",
    L"1",
    L"\u212Ao",
    L"\uFF4Aa",
    L"\u0440\u0443",
    L"ja-jpja-jp",
    L"xx-xxxxxxxxxxx",
};

TEST(ParseLanguageCode, KnowsTheWholeCodesInAnyCaseAndTakesAllOthersForEnglish) {
    for (const auto& [code, language] : KnownCodes()) {
        EXPECT_EQ(ParseLanguageCode(code), language) << Printed(code);
    }
    for (const wchar_t* const code : UnknownCodes) {
        EXPECT_EQ(ParseLanguageCode(code), Language::English) << Printed(code);
    }
    EXPECT_EQ(ParseLanguageCode(L""), Language::English);
    EXPECT_EQ(ParseLanguageCode(nullptr), Language::English);
}

TEST(LanguageFromIdentifier, IgnoresTheCountryExceptForChinese) {
    for (std::uint32_t number = 0; number <= 0xFFFF; ++number) {
        const auto identifier = static_cast<std::uint16_t>(number);
        ASSERT_EQ(LanguageFromIdentifier(identifier), ExpectedLanguage(identifier)) << number;
    }
}

TEST(CurrentLanguage, IsEnglishBeforeOneIsChosen) {
    EXPECT_EQ(LanguageBeforeTheChoice, Language::English);
}

LANGID displayLanguage = 0;

LANGID WINAPI AnswerDisplayLanguage() {
    return displayLanguage;
}

// The language is chosen in a system with this display language: the United States', Japan's or
// that of Hong Kong.
class InitLanguageTest : public testing::TestWithParam<LANGID> {
protected:
    InitLanguageTest() : patch_("GetUserDefaultUILanguage", AnswerDisplayLanguage) {
        displayLanguage = GetParam();
        ChooseLanguage(L"ru");
    }

private:
    ImportPatch<decltype(&GetUserDefaultUILanguage)> patch_;
};

TEST_P(InitLanguageTest, UsesTheLanguageOfTheVariable) {
    for (const auto& [code, language] : KnownCodes()) {
        ChooseLanguage(code);
        EXPECT_EQ(CurrentLanguage(), language) << Printed(code);
    }
}

TEST_P(InitLanguageTest, TreatsEveryOtherValueAsEnglish) {
    for (const wchar_t* const code : UnknownCodes) {
        ChooseLanguage(L"ru");
        ChooseLanguage(code);
        EXPECT_EQ(CurrentLanguage(), Language::English) << Printed(code);
    }
}

TEST_P(InitLanguageTest, TreatsAnOverlongValueAsEnglish) {
    for (const std::size_t length : {14U, 15U, 16U, 17U, 18U, 255U, 256U, 1000U, 32000U}) {
        std::wstring value = L"ja-jp";
        value.resize(length, L'x');
        ChooseLanguage(L"ru");
        ChooseLanguage(value.c_str());
        EXPECT_EQ(CurrentLanguage(), Language::English) << length;
    }
}

TEST_P(InitLanguageTest, FollowsTheDisplayLanguageWithoutTheVariable) {
    for (const wchar_t* const value : {static_cast<const wchar_t*>(nullptr), L""}) {
        ChooseLanguage(L"ru");
        ChooseLanguage(value);
        EXPECT_EQ(CurrentLanguage(), ExpectedLanguage(GetParam()));
    }
}

INSTANTIATE_TEST_SUITE_P(DisplayLanguages, InitLanguageTest,
                         testing::Values(LANGID{0x0409}, LANGID{0x0411}, LANGID{0x0C04}),
                         [](const auto& test) { return std::to_string(test.param); });

}  // namespace

}  // namespace morvane::test
