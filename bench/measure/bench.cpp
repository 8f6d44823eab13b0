#include "measure/bench.h"

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string_view>

#include "base/process.h"
#include "pin/engine.h"
#include "pin/settings_sync.h"
#include "support/settings_header.h"
#include "support/test_environment.h"

namespace morvane::bench {
namespace {

// What people pin: names of programs, of documents, and both.
constexpr std::array<std::string_view, 10> EntryForms = {
    "Calculator ",       "Quarterly report ",
    "Chat with team ",   "spreadsheet.ods - Table program ",
    "Music player ",     "Build log of project ",
    "Terminal: server ", "Übersicht der Termine ",
    "Video call ",       "Drawing ",
};

std::string Entries(int count) {
    std::string lines;
    for (int index = 0; index < count; ++index) {
        lines += EntryForms[static_cast<std::size_t>(index) % EntryForms.size()];
        // Every tenth with a minimum size.
        lines += std::to_string(index) + (index % 10 == 3 ? "\t640\t480\n" : "\n");
    }
    return lines;
}

std::string InJson(const std::vector<double>& numbers) {
    std::string text = "[";
    for (const double number : numbers) {
        text += (text.size() > 1 ? "," : "") + std::to_string(number);
    }
    return text + "]";
}

void Write(std::FILE* stream, const std::string& line) {
    std::fputs((line + "\n").c_str(), stream);
    std::fflush(stream);
}

}  // namespace

void Require(bool condition, const std::string& what) {
    if (!condition) {
        throw std::runtime_error("expected: " + what);
    }
}

void Announce(const std::string& what) {
    Write(stderr, "bench: " + what);
}

Pairs InTurn(int repetitions, const std::function<double()>& ours,
             const std::function<double()>& bare) {
    Pairs pairs;
    for (int turn = 0; turn <= repetitions; ++turn) {
        const bool oursFirst = turn % 2 != 0;
        const double first = oursFirst ? ours() : bare();
        const double second = oursFirst ? bare() : ours();
        if (turn > 0) {
            pairs.ours.push_back(oursFirst ? first : second);
            pairs.bare.push_back(oursFirst ? second : first);
        }
    }
    return pairs;
}

void Emit(const std::string& row, const Pairs& pairs) {
    Write(stdout, "{\"row\":\"" + row + "\",\"ours\":" + InJson(pairs.ours) +
                      ",\"bare\":" + InJson(pairs.bare) + "}");
}

std::vector<HWND> AddWindows(test::Actor& actor, int count, const wchar_t* title) {
    test::WindowSpec spec;
    spec.title = title;
    // Small, so that painting them does not count.
    spec.width = 160;
    spec.height = 60;
    return actor.CreateMany(count, spec);
}

std::string UnmatchedEntries() {
    return Entries(EntryCount);
}

std::string EntriesWithMatch() {
    return Entries(EntryCount - 1) + "pinned - a window\n";
}

void BindEngine(const std::string& lines) {
    test::WriteSettings(std::string(test::SettingsHeader) + "@pinning=1\n" + lines);
    PinEngine& engine = Engine();
    engine.ownClassName = ControlWindowClass;
    engine.ownWindow = nullptr;
    engine.settingsPath = test::SettingsPath();
    engine.pinnedWindows.clear();
    ReloadSettings();
}

}  // namespace morvane::bench
