#pragma once

// The steps, and what they share.

#include <string>
#include <vector>

#include "soak/churn.h"

namespace morvane::test {

// One change that takes effect at once, in the model too.
struct Step {
    const char* name;
    unsigned weight;
    // False if there was nothing to change.
    bool (*run)(Churn& churn);
};

// For the windows of other programs.
inline constexpr std::size_t WindowStepCount = 15;
extern const Step WindowSteps[WindowStepCount];

// For the settings file and the program's own commands.
inline constexpr std::size_t ProgramStepCount = 14;
extern const Step ProgramSteps[ProgramStepCount];

// A window appears; false if there are enough.
bool Appear(Churn& churn);

// Runs passes, in the program and in the model.
void RunPasses(Churn& churn, int count);

// The differences from the model after these passes; empty if there are none.
[[nodiscard]] std::string CheckModel(Churn& churn);

// The program's requests that raised the window, as it recorded them.
[[nodiscard]] std::vector<PositionRequest> RaisesOf(Churn& churn, const ModelWindow& window);

// Appends to the journal's last line.
void Note(Churn& churn, const std::string& line);

}  // namespace morvane::test
