#pragma once

#include <string>
#include <vector>

#include "kit/result.h"

namespace morvane::kit {

// What is seen once its tests have passed; docs/windows-checklist.md has the rest.
struct Step {
    const char* text;
    const char* tests;  // patterns
};

[[nodiscard]] const std::vector<Step>& Steps();

// The pattern that names none of the tests; empty if each names one.
[[nodiscard]] std::string UnknownTests(const Step& step, const std::vector<Test>& all);

// True if all of its tests were run and passed.
[[nodiscard]] bool IsDone(const Step& step, const std::vector<Test>& all,
                          const std::vector<Result>& results);

}  // namespace morvane::kit
