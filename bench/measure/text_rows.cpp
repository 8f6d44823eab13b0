#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "bare/bare_pass.h"
#include "bare/find_by_copies.h"
#include "measure/rows.h"
#include "measure/scene.h"
#include "pin/engine.h"
#include "pin/identity.h"
#include "pin/pin_list.h"
#include "settings/settings_file.h"
#include "support/test_environment.h"
#include "support/test_files.h"

namespace morvane::bench {

namespace {

constexpr int EntryCount = 100;
constexpr int FewEntries = 10;
constexpr std::size_t LargeFile = std::size_t{10} * 1000 * 1000;

// Takes results that nobody needs, so that the compiler keeps the work.
volatile std::size_t sink = 0;

std::wstring TitleOf(std::size_t units) {
    // No word twice, or patterns would be searched for in only a few places.
    constexpr std::wstring_view Text =
        L"Pinned - a window, Minutes of the last meeting about new offices: second draft with "
        L"remarks by everybody who came, among them planners, builders, neighbours and two "
        L"lawyers; costs until spring, open questions on parking, lifts, kitchens, quiet rooms, "
        L"carpets or wooden floors, heating, windows facing south, solar panels, bicycle racks, "
        L"keys for cleaners, insurance, moving day, old furniture sold off, telephone numbers "
        L"that change, signs above doors, printer locations, archive boxes labelled, plants "
        L"watered while nobody works there - Text program (shared folder, read only)";
    Require(units <= Text.size(), "a text of that length");
    return std::wstring(Text.substr(0, units));
}

struct IdentityRow {
    std::string_view name;
    std::size_t units;
    std::string lines;
    std::int32_t found;
};

void MeasureIdentity(const Plan& plan) {
    constexpr int Executions = 400;
    constexpr std::int32_t Last = EntryCount - 1;
    constexpr std::size_t UsualTitle = 60;
    const std::string matched = EntriesWithMatch(EntryCount);
    const std::array<IdentityRow, 5> table = {{
        {"identity_20", 20, matched, Last},
        {"identity_60", UsualTitle, matched, Last},
        {"identity_500", 500, matched, Last},
        {"identity_none", UsualTitle, UnmatchedEntries(EntryCount), NoEntry},
        {"identity_near", UsualTitle, NearMisses({TitleOf(UsualTitle)}, EntryCount), NoEntry},
    }};
    for (const IdentityRow& row : table) {
        Announce(std::string(row.name));
        BindEngine(row.lines);
        const std::wstring title = TitleOf(row.units);
        const PinList& list = Engine().pinList;
        Require(list.entries.size() == EntryCount, "a full list");
        Require(bare::FindByCopies(list, title) == row.found &&
                    FindBestEntryIndex(list, title) == row.found,
                "the right entry");
        Emit(row.name,
             MeasureInTurn(
                 plan, Executions,
                 [&] { sink = static_cast<std::size_t>(FindBestEntryIndex(list, title)); },
                 [&] { sink = static_cast<std::size_t>(bare::FindByCopies(list, title)); }));
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
    MeasureIdentity(plan);
    BindEngine(EntriesWithMatch(EntryCount));
    MeasureSmallFile(plan);

    struct LargeFileRow {
        std::string_view name;
        std::string first;
        std::string repeated;
    };
    const std::string entries = UnmatchedEntries(EntryCount);
    const std::array<LargeFileRow, 4> table = {{
        {"file_10mb_lines", entries, entries},
        {"file_10mb_switches", entries, "somebody@example.org - Mail program\n"},
        {"file_10mb_comments", UnmatchedEntries(FewEntries), "# A remark on one of the entries\n"},
        {"file_10mb_one_line", "", "x"},
    }};
    for (const LargeFileRow& row : table) {
        Announce(std::string(row.name));
        std::string bytes = row.first;
        while (bytes.size() < LargeFile) {
            bytes += row.repeated;
        }
        MeasureLargeFile(plan, row.name, bytes);
    }
    BindEngine("");
}

}  // namespace morvane::bench
