#include "kit/level.h"

#include <algorithm>
#include <map>

#include "kit/running_program.h"
#include "settings/text.h"

namespace morvane::kit {
namespace {

constexpr std::chrono::seconds LimitOfAList{60};

bool MatchesOne(std::string_view text, std::string_view pattern) {
    if (pattern.empty()) {
        return text.empty();
    }
    if (pattern.front() == '*') {
        return MatchesOne(text, pattern.substr(1)) ||
               (!text.empty() && MatchesOne(text.substr(1), pattern));
    }
    return !text.empty() && (pattern.front() == '?' || pattern.front() == text.front()) &&
           MatchesOne(text.substr(1), pattern.substr(1));
}

}  // namespace

test::Environment Kit::TestEnvironment(std::string_view filter) const {
    return {
        {L"MORVANE_TEST_DISPOSABLE", L"1"},
        {L"MORVANE_TEST_PROGRAM", Program()},
        {L"MORVANE_TEST_FAULTY_PROGRAM", Part(L"morvane_faulty.exe")},
        {L"MORVANE_TEST_ACTOR", Part(L"window_actor.exe")},
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

std::vector<Test> TestsOf(const Kit& kit, const Level& level) {
    if (level.onlyTest != nullptr) {
        return {{level.name, level.onlyTest}};
    }
    std::vector<Test> tests;
    RunningProgram program(kit.Part(level.file), L"--gtest_list_tests", kit.TestEnvironment("*"),
                           kit.stop);
    std::string suite;
    std::string line;
    while (program.Next(line, Clock::now() + LimitOfAList) == Happening::Line) {
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
    return tests;
}

bool Matches(std::string_view text, std::string_view patterns) {
    while (true) {
        const std::size_t colon = patterns.find(':');
        if (MatchesOne(text, patterns.substr(0, colon))) {
            return true;
        }
        if (colon == std::string_view::npos) {
            return false;
        }
        patterns.remove_prefix(colon + 1);
    }
}

std::string FilterOf(const std::vector<Test>& chosen, const std::vector<Test>& all) {
    std::map<std::string, std::vector<std::string>> suites;
    for (const Test& test : chosen) {
        suites[test.suite].push_back(FullName(test));
    }
    std::string filter;
    for (const auto& [suite, names] : suites) {
        const std::string& name = suite;
        const auto size = std::count_if(all.begin(), all.end(),
                                        [&name](const Test& test) { return test.suite == name; });
        if (names.size() == static_cast<std::size_t>(size)) {
            filter += suite + ".*:";
            continue;
        }
        for (const std::string& test : names) {
            filter += test + ":";
        }
    }
    return filter;
}

}  // namespace morvane::kit
