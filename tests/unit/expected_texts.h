#pragma once

#include <span>

#include "i18n/language.h"
#include "i18n/strings.h"

namespace morvane::test {

struct ExpectedText {
    const char* name;  // of the id
    StringId id;
    Language language;
    const wchar_t* text;
};

// Every text in every language, kept apart from the program's own table: whoever changes a text
// changes it in both places, and a slip in one of them shows.
[[nodiscard]] std::span<const ExpectedText> ExpectedTexts();

}  // namespace morvane::test
