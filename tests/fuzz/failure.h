#pragma once

// What becomes of an input that fails, also by a crash or by taking forever.

#include <cstdint>
#include <string>
#include <string_view>

namespace morvane::test {

// From now on a fault, an abort or ten seconds without a new input end the program with status 3,
// the input under work saved to the folder.
void WatchForCrashes(std::wstring folder);

// The input under work. The document is empty for one that is made from the seed alone.
void NoteInput(std::uint32_t seed, std::string document);

// What goes with the document, printed: the titles and other texts that it is checked with. It is
// saved beside the document; empty while the document alone is under work.
void NoteText(std::string printed);

// Saves the input under work and prints where, with its seed and what is wrong. Only the first
// failure counts.
void ReportFailure(std::string_view wrong);

}  // namespace morvane::test
