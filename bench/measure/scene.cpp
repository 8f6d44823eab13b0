#include "measure/scene.h"

#include <array>
#include <string_view>

#include "base/process.h"
#include "cost/allocation_count.h"
#include "measure/sampling.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "pin/settings_sync.h"
#include "settings/text.h"
#include "support/settings_header.h"
#include "support/test_environment.h"

namespace morvane::bench {

namespace {

// What people pin: names of programs, of documents, and both.
constexpr std::array<std::string_view, 10> EntryForms = {
    "Calculator ",
    "Quarterly report ",
    "Chat with team ",
    "spreadsheet.ods - Table program ",
    "Music player ",
    "Build log of project ",
    "Terminal: server ",
    "\xC3\x9C"
    "bersicht der Termine ",
    "Video call ",
    "Drawing ",
};

std::string Entry(int index) {
    std::string line(EntryForms[static_cast<std::size_t>(index) % EntryForms.size()]);
    line += std::to_string(index);
    // Every tenth with a minimum size.
    return line + (index % 10 == 3 ? "\t640\t480\n" : "\n");
}

}  // namespace

std::vector<HWND> AddWindows(test::Actor& actor, int count, const wchar_t* title) {
    test::WindowSpec spec;
    spec.title = title;
    spec.width = 160;
    spec.height = 60;
    return actor.CreateMany(count, spec);
}

std::string UnmatchedEntries(int count) {
    std::string lines;
    for (int index = 0; index < count; ++index) {
        lines += Entry(index);
    }
    return lines;
}

std::string EntriesWithMatch(int count) {
    return UnmatchedEntries(count - 1) + "pinned - a window\n";
}

std::string NearMisses(const std::vector<std::wstring>& titles, int count) {
    // Up to this many units are cut off, so that patterns from the same title differ.
    constexpr std::size_t Cuts = 8;
    // The changed unit is one of this many near the end, and so in the latter half.
    constexpr std::size_t Places = 13;
    std::string lines;
    for (int index = 0; index < count; ++index) {
        const auto which = static_cast<std::size_t>(index);
        std::wstring pattern = titles[which % titles.size()];
        Require(pattern.size() > Cuts + 2 * Places, "titles long enough");
        pattern.resize(pattern.size() - which % Cuts);
        wchar_t& unit = pattern[pattern.size() - 2 - which / Cuts % Places];
        // Common letters, so that the new pairs may occur elsewhere in the title.
        unit = unit == L'e' ? L'a' : L'e';
        lines += WideToUtf8(pattern) + "\n";
    }
    return lines;
}

double AllocationsOfPass() {
    ApplyAll();
    return static_cast<double>(test::AllocationsOf(ApplyAll));
}

void BindEngine(const std::string& lines) {
    Require(test::WriteSettings(std::string(test::SettingsHeader) + "@pinning=1\n" + lines),
            "settings written");
    PinEngine& engine = Engine();
    engine.ownClassName = ControlWindowClass;
    engine.ownWindow = nullptr;
    engine.settingsPath = test::SettingsPath();
    engine.pinnedWindows.clear();
    ReloadSettings();
}

}  // namespace morvane::bench
