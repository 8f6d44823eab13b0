#pragma once

// The disturbances. Each makes one change that takes effect at once, and tells the model.

#include <string>

#include "soak/churn.h"

namespace morvane::test {

struct Step {
    const char* name;
    unsigned weight;
    // False when there is nothing to do it with; nothing has happened then. What is found wrong
    // on the way goes into the text.
    bool (*run)(Churn& churn, std::string& wrong);
};

// The windows of other programs.
inline constexpr std::size_t WindowStepCount = 14;
extern const Step WindowSteps[WindowStepCount];

// The settings file and the program's own commands.
inline constexpr std::size_t ProgramStepCount = 15;
extern const Step ProgramSteps[ProgramStepCount];

// Passes until the program has seen everything, and the model with it.
void RunPasses(Churn& churn, int count);

}  // namespace morvane::test
