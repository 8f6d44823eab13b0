#pragma once

// The ten languages of the interface and the choice among them. The choice is made once, at
// start-up; afterwards it is only read.

#include <cstdint>

namespace morvane {

// In the order of the columns of the text table.
enum class Language : std::uint8_t {
    English,
    Japanese,
    ChineseSimplified,
    ChineseTraditional,
    Korean,
    Spanish,
    French,
    German,
    PortugueseBrazil,
    Russian,
};
constexpr int LanguageCount = 10;

// The whole code decides, without regard to ASCII case; null, empty and unknown codes are English.
[[nodiscard]] Language ParseLanguageCode(const wchar_t* code);

// The language for a Windows language identifier (primary language and sublanguage).
[[nodiscard]] Language LanguageFromIdentifier(std::uint16_t identifier);

// Chooses from the environment variable MORVANE_LANG, else from the display language. Called once,
// before the first text is shown.
void InitLanguage();

// English until InitLanguage has run.
[[nodiscard]] Language CurrentLanguage();

}  // namespace morvane
