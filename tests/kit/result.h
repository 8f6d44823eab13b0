#pragma once

#include <cstddef>
#include <string>

namespace morvane::kit {

// NotRun: the run was stopped, or the test's program could not go on.
enum class Outcome { Passed, Failed, Skipped, Error, NotRun };

struct Test {
    std::string suite;
    std::string name;
};

struct Result {
    std::string level;
    Test test;
    Outcome outcome = Outcome::NotRun;
    double seconds = 0;
    std::string text;  // what the test printed; of a skipped one, the reason
};

[[nodiscard]] inline std::string FullName(const Test& test) {
    return test.suite + "." + test.name;
}

// What nobody ran is no failure, but no success either.
[[nodiscard]] inline bool IsFailure(Outcome outcome) {
    return outcome == Outcome::Failed || outcome == Outcome::Error;
}

[[nodiscard]] inline const char* NameOf(Outcome outcome) {
    constexpr const char* Names[] = {"passed", "FAILED", "skipped", "ERROR", "not run"};
    return Names[static_cast<std::size_t>(outcome)];
}

}  // namespace morvane::kit
