// The identity of titles, and reading settings files.

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "bare/loops.h"
#include "base/win.h"
#include "measure/bench.h"
#include "pin/engine.h"
#include "pin/identity.h"
#include "settings/settings_file.h"
#include "settings/text.h"
#include "support/test_environment.h"
#include "support/test_files.h"

namespace morvane::bench {
namespace {

// No word twice, or patterns would be searched for in only a few places.
constexpr std::wstring_view Title = L"Pinned - a window, Minutes of the last meeting about new off";
static_assert(Title.size() == 60);

// Takes results that nobody needs, so that the compiler keeps the work.
volatile std::size_t sink = 0;

// Beginnings of the title with one late unit changed: these are slow to rule out.
std::string NearMisses() {
    // Up to this many units are cut off, so that the patterns differ.
    constexpr std::size_t Cuts = 8;
    // The changed unit is one of this many near the end, and so in the latter half.
    constexpr std::size_t Places = 13;
    std::string lines;
    for (std::size_t which = 0; which < EntryCount; ++which) {
        std::wstring pattern(Title.substr(0, Title.size() - which % Cuts));
        wchar_t& unit = pattern[pattern.size() - 2 - which / Cuts % Places];
        // Common letters, so that the new pairs may occur elsewhere in the title.
        unit = unit == L'e' ? L'a' : L'e';
        lines += WideToUtf8(pattern) + "\n";
    }
    return lines;
}

void MeasureIdentity(const Plan& plan, const std::string& row, const std::string& lines,
                     std::int32_t found) {
    constexpr int Executions = 400;
    Announce(row);
    BindEngine(lines);
    const PinList& list = Engine().pinList;
    Require(list.entries.size() == EntryCount, "a full list");
    const auto ours = [&] { return FindBestEntryIndex(list, Title); };
    const auto bare = [&] { return bare::FindByCopies(list, Title); };
    Require(ours() == found && bare() == found, "the right entry");
    Emit(row, InTurn(plan.repetitions,
                     TimeOf([=] { sink = static_cast<std::size_t>(ours()); }, Executions),
                     TimeOf([=] { sink = static_cast<std::size_t>(bare()); }, Executions)));
}

}  // namespace

void MeasureTexts(const Plan& plan) {
    MeasureIdentity(plan, "identity_60", EntriesWithMatch(), EntryCount - 1);
    MeasureIdentity(plan, "identity_near", NearMisses(), NoEntry);

    Announce("settings files");
    BindEngine(EntriesWithMatch());
    const std::wstring path = test::SettingsPath();
    const auto read = [&] { sink = ReadSettingsFile(path).entries.size(); };
    std::array<char, 16384> buffer{};
    const std::size_t size = bare::ReadFileOnce(path.c_str(), buffer);
    Require(size > 0 && size < buffer.size(), "the file fits the buffer");
    constexpr int Executions = 100;
    Emit("file_100",
         InTurn(plan.repetitions, TimeOf(read, Executions),
                TimeOf([&] { sink = bare::ReadFileOnce(path.c_str(), buffer); }, Executions)));

    constexpr std::size_t LargeFile = std::size_t{10} * 1000 * 1000;
    std::string bytes;
    while (bytes.size() < LargeFile) {
        bytes += UnmatchedEntries();
    }
    Require(test::WriteFileBytes(path, bytes), "large file written");
    Require(ReadSettingsFile(path).entries.size() == EntryCount, "a full list");
    const auto convert = [&] { sink = bare::ReadAndConvertFile(path.c_str(), bytes.size()); };
    Emit("file_10mb", InTurn(plan.repetitions, TimeOf(read), TimeOf(convert)));
}

}  // namespace morvane::bench
