#include "kit/level.h"

#include <algorithm>

#include "kit/running_program.h"
#include "settings/text.h"
#include "support/test_files.h"

namespace morvane::kit {
namespace {

constexpr std::chrono::seconds LimitOfAList{60};
constexpr const wchar_t* Faulty = L"morvane_faulty.exe";
constexpr const wchar_t* Actor = L"window_actor.exe";
constexpr const wchar_t* PlantedLibrary = L"planted_library.dll";

}  // namespace

test::Environment Kit::TestEnvironment(std::string_view filter) const {
    return {
        {L"MORVANE_TEST_DISPOSABLE", L"1"},
        {L"MORVANE_TEST_PROGRAM", Program()},
        {L"MORVANE_TEST_FAULTY_PROGRAM", Part(Faulty)},
        {L"MORVANE_TEST_ACTOR", Part(Actor)},
        {L"MORVANE_TEST_PLANTED_LIBRARY", Part(PlantedLibrary)},
        {L"MORVANE_TEST_VERSION", Utf8ToWide(MORVANE_VERSION)},
        {L"MORVANE_TEST_KNOWN_SKIPS", std::nullopt},
        {L"MORVANE_LANG", std::nullopt},
        {L"GTEST_FILTER", Utf8ToWide(filter)},
        {L"GTEST_TOTAL_SHARDS", std::nullopt},
        {L"GTEST_SHARD_INDEX", std::nullopt},
        {L"GTEST_OUTPUT", std::nullopt},
        {L"GTEST_COLOR", L"no"},
    };
}

const std::vector<Level>& Levels() {
    static const std::vector<Level> levels = {
        {"unit", L"morvane_unit_tests.exe", L"", nullptr},
        {"cost", L"morvane_cost_tests.exe", L"", nullptr},
        {"desktop", L"morvane_desktop_tests.exe", L"", nullptr},
        {"program", L"morvane_program_tests.exe", L"", nullptr},
        {"fuzz", L"morvane_fuzz.exe", L"--seconds 15 --kept tests\\kept --save .",
         "KeptAndGeneratedDocuments"},
    };
    return levels;
}

std::wstring MissingFile(const Kit& kit) {
    std::vector<std::wstring> files = {kit.Program(), kit.Part(Faulty), kit.Part(Actor),
                                       kit.Part(PlantedLibrary)};
    for (const Level& level : Levels()) {
        files.push_back(kit.Part(level.file));
    }
    const auto missing = std::find_if_not(files.begin(), files.end(), test::PathExists);
    return missing != files.end() ? *missing : std::wstring();
}

std::optional<std::vector<Test>> TestsOf(const Kit& kit, const Level& level,
                                         std::string_view filter) {
    std::vector<Test> tests;
    if (level.onlyTest != nullptr) {
        const Test test{level.name, level.onlyTest};
        if (Matches(FullName(test), filter)) {
            tests.push_back(test);
        }
        return tests;
    }
    RunningProgram program(kit.Part(level.file), L"--gtest_list_tests", kit.TestEnvironment(filter),
                           kit.stop);
    std::string suite;
    std::string line;
    Happening happening{};
    while ((happening = program.Next(line, Clock::now() + LimitOfAList)) == Happening::Line) {
        // Parameters follow behind a blank and a "#".
        const bool isTest = line.starts_with("  ");
        const std::string name = line.substr(isTest ? 2 : 0);
        const std::string word = name.substr(0, name.find(' '));
        if (isTest && !suite.empty()) {
            tests.push_back({suite, word});
        } else if (word.ends_with('.')) {
            suite = word.substr(0, word.size() - 1);
        }
    }
    const bool isWhole = happening == Happening::Ended && program.ExitCode() == 0;
    return isWhole ? std::optional(tests) : std::nullopt;
}

bool Matches(std::string_view text, std::string_view pattern) {
    if (pattern.empty()) {
        return text.empty();
    }
    if (pattern.front() == '*') {
        return Matches(text, pattern.substr(1)) ||
               (!text.empty() && Matches(text.substr(1), pattern));
    }
    return text.starts_with(pattern.front()) && Matches(text.substr(1), pattern.substr(1));
}

}  // namespace morvane::kit
