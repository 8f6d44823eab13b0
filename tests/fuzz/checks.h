#pragma once

// Each runs one input through the program's functions and compares the result with the reference
// and with what holds for every input. Returns what is wrong; empty if nothing is.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/guarded_memory.h"
#include "fuzz/round_trip.h"
#include "pin/pin_list.h"

namespace morvane::test {

struct Workplace {
    GuardedMemory first;
    GuardedMemory second;
    // How many entries did not survive a round trip, by kind.
    std::array<std::uint64_t, UnstableKinds> unstableEntries{};
    std::uint64_t entries = 0;
};

// Parse; then format and parse until nothing changes any more.
[[nodiscard]] std::string CheckDocument(Workplace& workplace, std::string_view document,
                                        Guard guard);

// Format, parse.
[[nodiscard]] std::string CheckTitleList(Workplace& workplace, const PinList& list);

[[nodiscard]] std::string CheckTitle(Workplace& workplace, const PinList& list,
                                     const std::wstring& title, Guard guard);
[[nodiscard]] std::string CheckCommandLine(Workplace& workplace, const std::wstring& commandLine,
                                           Guard guard);
[[nodiscard]] std::string CheckLanguageCode(Workplace& workplace, const std::wstring& code);

}  // namespace morvane::test
