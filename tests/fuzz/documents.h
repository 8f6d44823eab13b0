#pragma once

// Generates the inputs. A seed repeats them.

#include <string>

#include "pin/pin_list.h"
#include "support/generated.h"

namespace morvane::test {

// A settings file: assembled from valid and unexpected parts, written from a list, or random; and
// perhaps corrupted in a few places.
[[nodiscard]] std::string AnyDocument(Generator& generator);

// A list built from window titles, as the menu does, whatever they contain.
[[nodiscard]] PinList AnyTitleList(Generator& generator);

// A title more or less related to the list's patterns.
[[nodiscard]] std::wstring AnyTitle(Generator& generator, const PinList& list);

[[nodiscard]] std::wstring AnyCommandLine(Generator& generator);

// Without NUL.
[[nodiscard]] std::wstring AnyLanguageCode(Generator& generator);

}  // namespace morvane::test
