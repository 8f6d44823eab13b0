#pragma once

#include <string>
#include <vector>

#include "kit/machine.h"
#include "kit/result.h"

namespace morvane::kit {

struct Report {
    std::vector<Fact> facts;
    bool isWhole = false;  // every test was asked for
    std::vector<Result> results;
    std::vector<std::string> troubles;  // of the run itself; each is a failure
    double seconds = 0;
};

[[nodiscard]] std::size_t CountOf(const Report& report, Outcome outcome);

// "12 passed, 0 failed, 1 skipped, 0 not run"
[[nodiscard]] std::string Summary(const Report& report);

// True if something was run and nothing is wrong.
[[nodiscard]] bool IsGood(const Report& report);

[[nodiscard]] std::string PlainText(const Report& report);
[[nodiscard]] std::string JUnitXml(const Report& report);

}  // namespace morvane::kit
