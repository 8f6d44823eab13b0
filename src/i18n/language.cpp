#include "i18n/language.h"

#include <array>
#include <string_view>

#include "base/win.h"
#include "settings/text.h"

namespace morvane {

namespace {

struct LanguageCode {
    std::wstring_view code;
    Language language;
};

// The bare "zh" is left out deliberately: it does not say which of the two scripts is meant.
constexpr std::array LanguageCodes = {
    LanguageCode{L"en", Language::English},
    LanguageCode{L"en-us", Language::English},
    LanguageCode{L"ja", Language::Japanese},
    LanguageCode{L"ja-jp", Language::Japanese},
    LanguageCode{L"zh-cn", Language::ChineseSimplified},
    LanguageCode{L"zh-tw", Language::ChineseTraditional},
    LanguageCode{L"ko", Language::Korean},
    LanguageCode{L"ko-kr", Language::Korean},
    LanguageCode{L"es", Language::Spanish},
    LanguageCode{L"es-es", Language::Spanish},
    LanguageCode{L"fr", Language::French},
    LanguageCode{L"fr-fr", Language::French},
    LanguageCode{L"de", Language::German},
    LanguageCode{L"de-de", Language::German},
    LanguageCode{L"pt", Language::PortugueseBrazil},
    LanguageCode{L"pt-br", Language::PortugueseBrazil},
    LanguageCode{L"ru", Language::Russian},
    LanguageCode{L"ru-ru", Language::Russian},
};

constexpr DWORD CodeBufferLength = 16;  // 15 units and the terminator

Language currentLanguage = Language::English;

Language ChineseForm(WORD sublanguage) {
    switch (sublanguage) {
        case SUBLANG_CHINESE_TRADITIONAL:
        case SUBLANG_CHINESE_HONGKONG:
        case SUBLANG_CHINESE_MACAU:
            return Language::ChineseTraditional;
        default:
            return Language::ChineseSimplified;
    }
}

}  // namespace

Language ParseLanguageCode(const wchar_t* code) {
    const std::wstring_view text = code != nullptr ? code : L"";
    for (const LanguageCode& known : LanguageCodes) {
        if (EqualsIgnoreCase(text, known.code)) {
            return known.language;
        }
    }
    return Language::English;
}

Language LanguageFromIdentifier(std::uint16_t identifier) {
    switch (PRIMARYLANGID(identifier)) {
        case LANG_CHINESE:
            return ChineseForm(SUBLANGID(identifier));
        case LANG_JAPANESE:
            return Language::Japanese;
        case LANG_KOREAN:
            return Language::Korean;
        case LANG_SPANISH:
            return Language::Spanish;
        case LANG_FRENCH:
            return Language::French;
        case LANG_GERMAN:
            return Language::German;
        case LANG_PORTUGUESE:
            return Language::PortugueseBrazil;
        case LANG_RUSSIAN:
            return Language::Russian;
        default:
            return Language::English;
    }
}

void InitLanguage() {
    std::array<wchar_t, CodeBufferLength> code{};
    const DWORD length = GetEnvironmentVariableW(L"MORVANE_LANG", code.data(), CodeBufferLength);
    if (length == 0) {
        currentLanguage = LanguageFromIdentifier(GetUserDefaultUILanguage());
        return;
    }
    // Deliberate: once the variable is set the display language is not asked, so that an unknown
    // code, or one too long for the buffer (whose content is then undefined), means English.
    currentLanguage =
        length < CodeBufferLength ? ParseLanguageCode(code.data()) : Language::English;
}

Language CurrentLanguage() {
    return currentLanguage;
}

}  // namespace morvane
