#pragma once

// The inputs: made from a generator alone, so that a seed repeats them.

#include <string>

#include "pin/pin_list.h"
#include "unit/generated.h"

namespace morvane::test {

// Settings files: put together from what the format knows and what it does not expect, written
// from a list, random, or one of these spoiled in a few places.
[[nodiscard]] std::string AnyDocument(Generator& generator);

// A list as the menu builds it from window titles, whatever those hold.
[[nodiscard]] PinList AnyTitleList(Generator& generator);

// A title that has to do with the list's patterns, more or less.
[[nodiscard]] std::wstring AnyTitle(Generator& generator, const PinList& list);

[[nodiscard]] std::wstring AnyCommandLine(Generator& generator);

// Without NUL.
[[nodiscard]] std::wstring AnyLanguageCode(Generator& generator);

}  // namespace morvane::test
