#pragma once

// Changes the windows around the program, its settings file and its state one step at a time, and
// predicts the result with the model. Only the seed and the model determine the steps, so a seed
// repeats them.

#include <array>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "soak/model.h"
#include "soak/pass_driver.h"
#include "soak/settings_on_disk.h"
#include "support/actor.h"
#include "support/generated.h"

namespace morvane::test {

struct ChurnCounts {
    std::uint64_t steps = 0;
    std::uint64_t menus = 0;
    std::uint64_t abouts = 0;
    std::uint64_t hangs = 0;
    std::uint64_t refusedAdditions = 0;  // to a full list
    std::uint64_t secondLooks = 0;
    std::uint64_t waits = 0;        // for the end of a pass, before the requests could be judged
    std::uint64_t wrongOrders = 0;  // despite right requests
};

struct Churn {
    static constexpr std::size_t ActorCount = 3;

    Churn(PassDriver& passDriver, std::uint32_t seed) : driver(&passDriver), generator(seed) {}

    PassDriver* driver;
    Generator generator;
    Model model;
    SettingsOnDisk settings;
    std::array<Actor, ActorCount> actors;
    std::vector<HWND> owners;  // one per actor, never visible
    ChurnCounts counts;
    std::size_t lastPasses = 0;       // as many as saw the windows and the file as they are
    std::string wrong;                // what a step has found; empty while nothing is
    std::deque<std::string> journal;  // the last steps
};

// Creates the owners and the first windows. Expects the settings file that the first start wrote.
void BeginChurn(Churn& churn);

// Makes one change, runs at least one whole pass and checks everything. Returns the differences
// from the model; empty if there are none.
[[nodiscard]] std::string RunStep(Churn& churn);

// The same without a change.
[[nodiscard]] std::string RunQuietStep(Churn& churn);

// The last steps, the windows and the file.
[[nodiscard]] std::string Account(Churn& churn);

}  // namespace morvane::test
