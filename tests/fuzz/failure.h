#pragma once

// Saves the input that fails, crashes or never finishes.

#include <cstdint>
#include <string>
#include <string_view>

namespace morvane::test {

// From now on, a fault, an abort or ten seconds without a new input save the current input to the
// folder and end the program with status 3.
void WatchForCrashes(std::wstring folder);

// Sets the current input. The document is empty while it is being made from the seed.
void NoteInput(std::uint32_t seed, std::string document);

// Sets the title or other text that the document is checked with, printed, to be saved beside it.
// Empty while only the document is checked.
void NoteText(std::string printed);

// Saves the current input and prints where, with its seed and what is wrong. Later failures are
// ignored.
void ReportFailure(std::string_view wrong);

}  // namespace morvane::test
