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

// Every text in every language, independent of the program's table: a text must be changed in both
// places, so that a slip in one of them fails a test.
[[nodiscard]] std::span<const ExpectedText> ExpectedTexts();

}  // namespace morvane::test
