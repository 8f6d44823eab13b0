#pragma once

#include <string>
#include <vector>

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
    switch (outcome) {
        case Outcome::Passed:
            return "passed";
        case Outcome::Failed:
            return "FAILED";
        case Outcome::Skipped:
            return "skipped";
        case Outcome::Error:
            return "ERROR";
        case Outcome::NotRun:
            break;
    }
    return "not run";
}

}  // namespace morvane::kit
