#include <array>
#include <string>
#include <string_view>

#include "bare/bare_pass.h"
#include "measure/rows.h"
#include "measure/scene.h"
#include "pin/engine.h"
#include "pin/identity.h"
#include "pin/pin_list.h"
#include "settings/settings_file.h"
#include "settings/text.h"
#include "support/test_environment.h"
#include "support/test_files.h"

namespace morvane::bench {

namespace {

constexpr int EntryCount = 100;
constexpr std::size_t LargeFile = std::size_t{10} * 1000 * 1000;

// Where a result goes that nobody needs, so that the work for it is done.
volatile std::size_t sink = 0;

// The rule of identity as it is told: both sides copied and lower-cased for each comparison.
std::int32_t FindByCopies(const PinList& list, std::wstring_view title) {
    std::int32_t best = NoEntry;
    std::size_t bestLength = 0;
    std::int32_t index = 0;
    for (const PinEntry& entry : list.entries) {
        const std::wstring pattern = ToLowerCopy(entry.pattern);
        if (ToLowerCopy(title).find(pattern) != std::wstring::npos && pattern.size() > bestLength) {
            best = index;
            bestLength = pattern.size();
        }
        ++index;
    }
    return best;
}

std::wstring TitleOf(std::size_t units) {
    constexpr std::wstring_view Words =
        L"Minutes of the meeting about the new offices, second draft with remarks - Text program; ";
    std::wstring title = L"Pinned - a window, ";
    while (title.size() < units) {
        title += Words;
    }
    title.resize(units);
    return title;
}

void MeasureIdentity(const Plan& plan) {
    constexpr int Executions = 400;
    for (const std::size_t units : {20U, 60U, 500U}) {
        const std::wstring title = TitleOf(units);
        const PinList& list = Engine().pinList;
        Announce("identity of a title of " + std::to_string(units) + " units");
        Require(list.entries.size() == EntryCount, "a full list");
        Require(FindByCopies(list, title) == EntryCount / 2 &&
                    FindBestEntryIndex(list, title) == EntryCount / 2,
                "one entry matches");
        Emit("identity_" + std::to_string(units),
             MeasureInTurn(
                 plan, Executions,
                 [&] { sink = static_cast<std::size_t>(FindBestEntryIndex(list, title)); },
                 [&] { sink = static_cast<std::size_t>(FindByCopies(list, title)); }));
    }
}

void MeasureSmallFile(const Plan& plan) {
    constexpr int Executions = 100;
    const std::wstring path = test::SettingsPath();
    std::array<char, 16384> buffer{};
    Announce("settings file of 100 entries");
    const std::size_t size = bare::ReadFileOnce(path.c_str(), buffer);
    Require(size > 0 && size < buffer.size(), "the file fits the buffer");
    Require(ReadSettingsFile(path).entries.size() == EntryCount, "100 entries");
    Emit("file_100", MeasureInTurn(
                         plan, Executions, [&] { sink = ReadSettingsFile(path).entries.size(); },
                         [&] { sink = bare::ReadFileOnce(path.c_str(), buffer); }));
}

void MeasureLargeFile(const Plan& plan, std::string_view row, const std::string& bytes) {
    const std::wstring path = test::SettingsPath();
    Require(test::WriteFileBytes(path, bytes), "large file written");
    Require(!ReadSettingsFile(path).entries.empty(), "the large file has entries");
    Emit(row, MeasureInTurn(
                  plan, 1, [&] { sink = ReadSettingsFile(path).entries.size(); },
                  [&] { sink = bare::ReadAndConvertFile(path.c_str()); }));
}

}  // namespace

void MeasureTexts(const Plan& plan) {
    BindEngine(EntriesWithMatch(EntryCount));
    MeasureIdentity(plan);
    MeasureSmallFile(plan);

    std::string lines;
    while (lines.size() < LargeFile) {
        lines += UnmatchedEntries(EntryCount);
    }
    Announce("settings file of 10 MB, in lines");
    MeasureLargeFile(plan, "file_10mb_lines", lines);
    Announce("settings file of 10 MB, in one line");
    MeasureLargeFile(plan, "file_10mb_one_line", std::string(LargeFile, 'x'));
    BindEngine("");
}

}  // namespace morvane::bench
