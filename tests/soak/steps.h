#pragma once

// The steps. Each makes one change that takes effect at once, and updates the model.

#include <string>

#include "soak/churn.h"

namespace morvane::test {

struct Step {
    const char* name;
    unsigned weight;
    // False if there was nothing to change. Anything found wrong goes into the text.
    bool (*run)(Churn& churn, std::string& wrong);
};

// For the windows of other programs.
inline constexpr std::size_t WindowStepCount = 14;
extern const Step WindowSteps[WindowStepCount];

// For the settings file and the program's own commands.
inline constexpr std::size_t ProgramStepCount = 15;
extern const Step ProgramSteps[ProgramStepCount];

// Runs passes, in the program and in the model.
void RunPasses(Churn& churn, int count);

}  // namespace morvane::test
