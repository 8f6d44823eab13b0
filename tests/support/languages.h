#pragma once

// What the interface says in its ten languages, independent of the program's tables: a text must be
// changed in both places, so that a slip in one of them fails a test.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "i18n/language.h"
#include "i18n/strings.h"

namespace morvane::test {

struct InterfaceLanguage {
    Language language;
    const wchar_t* code;  // for MORVANE_LANG
    const wchar_t* longCode;
};

constexpr std::array<InterfaceLanguage, LanguageCount> AllLanguages = {{
    {Language::English, L"en", L"en-us"},
    {Language::Japanese, L"ja", L"ja-jp"},
    {Language::ChineseSimplified, L"zh-cn", L"zh-cn"},
    {Language::ChineseTraditional, L"zh-tw", L"zh-tw"},
    {Language::Korean, L"ko", L"ko-kr"},
    {Language::Spanish, L"es", L"es-es"},
    {Language::French, L"fr", L"fr-fr"},
    {Language::German, L"de", L"de-de"},
    {Language::PortugueseBrazil, L"pt", L"pt-br"},
    {Language::Russian, L"ru", L"ru-ru"},
}};

// L"(no text)" for an id that is missing here.
[[nodiscard]] const wchar_t* ExpectedText(StringId id, Language language = Language::English);

// With the argument in place of "{0}".
[[nodiscard]] std::wstring ExpectedFormat(StringId id, std::wstring_view argument,
                                          Language language = Language::English);

// The language of a system with this display language.
[[nodiscard]] Language ExpectedLanguage(std::uint16_t displayLanguage);

// Chooses the interface language again, as if started with this MORVANE_LANG (null: not set).
void ChooseLanguage(const wchar_t* code);

}  // namespace morvane::test
