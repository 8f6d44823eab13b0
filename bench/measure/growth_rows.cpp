#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "bare/bare_pass.h"
#include "measure/rows.h"
#include "measure/scene.h"
#include "pin/enforcement.h"
#include "support/actor.h"

namespace morvane::bench {

namespace {

constexpr int EntryCount = 100;
constexpr std::array<int, 5> WindowCounts = {50, 100, 200, 400, 800};

// Several rounds, so that a temporary disturbance affects some times for every number of windows
// instead of all times for one.
constexpr int Rounds = 3;

struct Point {
    Pairs times;
    double allocations = 0;
};

void Append(std::vector<double>& all, const std::vector<double>& more) {
    all.insert(all.end(), more.begin(), more.end());
}

}  // namespace

void MeasureGrowth(const Plan& plan) {
    BindEngine(UnmatchedEntries(EntryCount));
    Plan part = plan;
    part.repetitions = (plan.repetitions + Rounds - 1) / Rounds;
    std::array<Point, WindowCounts.size()> points;
    for (int round = 1; round <= Rounds; ++round) {
        test::Actor actor;
        int opened = 0;
        for (std::size_t which = 0; which < points.size(); ++which) {
            const int count = WindowCounts[which];
            Announce("a pass over " + std::to_string(count) + " windows, round " +
                     std::to_string(round) + " of " + std::to_string(Rounds));
            static_cast<void>(AddWindows(actor, count - opened, PlainTitle));
            opened = count;
            const Pairs times = MeasureInTurn(part, 1, ApplyAll, [] { bare::LookAtWindows(); });
            Append(points[which].times.ours, times.ours);
            Append(points[which].times.bare, times.bare);
            points[which].allocations = std::max(points[which].allocations, AllocationsOfPass());
        }
    }
    for (std::size_t which = 0; which < points.size(); ++which) {
        const Point& point = points[which];
        Emit("windows_" + std::to_string(WindowCounts[which]),
             {{"ours", point.times.ours},
              {"bare", point.times.bare},
              {"allocations", {point.allocations}}});
    }
}

}  // namespace morvane::bench
