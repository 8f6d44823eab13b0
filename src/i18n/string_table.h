#pragma once

#include "i18n/language.h"
#include "i18n/strings.h"

namespace morvane {

// One row per StringId, one column per Language; every cell is filled.
extern const wchar_t* const LocalizedStringTable[StringCount][LanguageCount];

}  // namespace morvane
