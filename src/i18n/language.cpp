#include "i18n/language.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/win.h"
#include "settings/text.h"

namespace morvane {
namespace {

struct LanguageNames {
    Language language;
    WORD primary;  // LANG_...
    std::wstring_view code;
    std::wstring_view longCode;
};

// Every other code and identifier means English. Chinese has two forms and no bare "zh", which
// would not say which of them is meant; as an identifier the first one stands for all but the
// traditional.
constexpr std::array Languages = {
    LanguageNames{Language::Japanese, LANG_JAPANESE, L"ja", L"ja-jp"},
    LanguageNames{Language::ChineseSimplified, LANG_CHINESE, L"zh-cn", L"zh-cn"},
    LanguageNames{Language::ChineseTraditional, LANG_CHINESE, L"zh-tw", L"zh-tw"},
    LanguageNames{Language::Korean, LANG_KOREAN, L"ko", L"ko-kr"},
    LanguageNames{Language::Spanish, LANG_SPANISH, L"es", L"es-es"},
    LanguageNames{Language::French, LANG_FRENCH, L"fr", L"fr-fr"},
    LanguageNames{Language::German, LANG_GERMAN, L"de", L"de-de"},
    LanguageNames{Language::PortugueseBrazil, LANG_PORTUGUESE, L"pt", L"pt-br"},
    LanguageNames{Language::Russian, LANG_RUSSIAN, L"ru", L"ru-ru"},
};

constexpr DWORD CodeBufferLength = 16;  // 15 units and the terminator

Language currentLanguage = Language::English;

bool IsTraditionalChinese(WORD sublanguage) {
    return sublanguage == SUBLANG_CHINESE_TRADITIONAL || sublanguage == SUBLANG_CHINESE_HONGKONG ||
           sublanguage == SUBLANG_CHINESE_MACAU;
}

// English when no language fits.
template <typename Fits>
Language FindLanguage(Fits fits) {
    const auto* const found = std::ranges::find_if(Languages, fits);
    return found != Languages.end() ? found->language : Language::English;
}

}  // namespace

Language ParseLanguageCode(const wchar_t* code) {
    const std::wstring_view text = code != nullptr ? code : L"";
    return FindLanguage([&](const LanguageNames& names) {
        return EqualsIgnoreCase(text, names.code) || EqualsIgnoreCase(text, names.longCode);
    });
}

Language LanguageFromIdentifier(std::uint16_t identifier) {
    if (PRIMARYLANGID(identifier) == LANG_CHINESE && IsTraditionalChinese(SUBLANGID(identifier))) {
        return Language::ChineseTraditional;
    }
    return FindLanguage(
        [&](const LanguageNames& names) { return names.primary == PRIMARYLANGID(identifier); });
}

void InitLanguage() {
    std::array<wchar_t, CodeBufferLength> code{};
    const DWORD length = GetEnvironmentVariableW(L"MORVANE_LANG", code.data(), CodeBufferLength);
    if (length == 0) {
        currentLanguage = LanguageFromIdentifier(GetUserDefaultUILanguage());
        return;
    }
    // Once the variable is set the display language does not count: an unknown code means English,
    // and so does one too long for the buffer, whose content is then undefined.
    currentLanguage =
        length < CodeBufferLength ? ParseLanguageCode(code.data()) : Language::English;
}

Language CurrentLanguage() {
    return currentLanguage;
}

}  // namespace morvane
