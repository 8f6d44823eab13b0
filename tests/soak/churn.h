#pragma once

// Disturbs the program step by step: with windows of other processes, with its settings file and
// with its own commands, and predicts with the model what has to come of it. The steps are chosen
// by the seed and the model alone, so that a seed repeats them.

#include <array>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "soak/model.h"
#include "soak/pass_driver.h"
#include "soak/settings_on_disk.h"
#include "support/actor.h"
#include "unit/generated.h"

namespace morvane::test {

struct ChurnCounts {
    std::uint64_t steps = 0;
    std::uint64_t menus = 0;
    std::uint64_t abouts = 0;
    std::uint64_t hangs = 0;
    std::uint64_t refusedAdditions = 0;  // to a list without room
    std::uint64_t secondLooks = 0;
    std::uint64_t repairPasses = 0;
    std::uint64_t ordersOfTheSystem = 0;
};

struct Churn {
    static constexpr std::size_t ActorCount = 3;

    Churn(PassDriver& passDriver, std::uint32_t seed) : driver(&passDriver), generator(seed) {}

    PassDriver* driver;
    Generator generator;
    Model model;
    SettingsOnDisk settings;
    std::array<Actor, ActorCount> actors;
    std::vector<HWND> owners;  // one of each actor, never visible, for windows that get an owner
    ChurnCounts counts;
    std::deque<std::string> journal;  // the last steps
};

// The owners and the first windows; the settings file that the first start has written.
void BeginChurn(Churn& churn);

// One disturbance, at least one whole pass after it, and a look at everything. Empty, or what
// differs from the model.
[[nodiscard]] std::string RunStep(Churn& churn);

// One pass and a look, with nothing disturbed.
[[nodiscard]] std::string RunQuietStep(Churn& churn);

// What differs from the model, or nothing.
[[nodiscard]] std::string Look(Churn& churn);

// A line for the journal.
void Note(Churn& churn, const std::string& line);

// The last steps, the windows and the file.
[[nodiscard]] std::string Account(Churn& churn);

}  // namespace morvane::test
