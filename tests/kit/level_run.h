#pragma once

#include <functional>
#include <vector>

#include "kit/level.h"

namespace morvane::kit {

struct LevelRun {
    std::vector<Test> tests;
    std::function<void(const Test&)> onStart;
    std::function<void(const Result&)> onResult;
};

// Runs these tests of a level and reports a result for each. A program that dies or hangs is
// started again for the tests after that.
void RunLevel(const Kit& kit, const Level& level, const LevelRun& run);

}  // namespace morvane::kit
