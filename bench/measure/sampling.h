#pragma once

// Takes times and hands them to the report: one line of JSON per row on standard output, progress
// on standard error.

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/win.h"

namespace morvane::bench {

struct Plan {
    int repetitions = 21;
    int idleSeconds = 60;
};

// Throws std::runtime_error: measuring the wrong thing is worse than measuring nothing.
void Require(bool condition, const std::string& what);

void Announce(const std::string& what);

[[nodiscard]] inline std::int64_t Ticks() {
    LARGE_INTEGER now{};
    QueryPerformanceCounter(&now);
    return now.QuadPart;
}

[[nodiscard]] double Microseconds(std::int64_t ticks);

// Times of the program's code and of what it is compared with, in microseconds per execution.
struct Pairs {
    std::vector<double> ours;
    std::vector<double> bare;
};

// The time per execution, averaged over all of them.
template <typename Work>
[[nodiscard]] double TimeOf(int executions, Work&& work) {
    const std::int64_t start = Ticks();
    for (int execution = 0; execution < executions; ++execution) {
        work();
    }
    return Microseconds(Ticks() - start) / executions;
}

// Measures both in turn, alternating which goes first, so that a temporary disturbance affects
// both. The first turn warms up and does not count.
template <typename Ours, typename Bare>
[[nodiscard]] Pairs MeasureInTurn(const Plan& plan, int executions, Ours&& ours, Bare&& bare) {
    Pairs pairs;
    for (int repetition = 0; repetition <= plan.repetitions; ++repetition) {
        const bool oursFirst = repetition % 2 != 0;
        double oursTime = oursFirst ? TimeOf(executions, ours) : 0;
        const double bareTime = TimeOf(executions, bare);
        if (!oursFirst) {
            oursTime = TimeOf(executions, ours);
        }
        if (repetition > 0) {
            pairs.ours.push_back(oursTime);
            pairs.bare.push_back(bareTime);
        }
    }
    return pairs;
}

// The numbers of one row, by the names the report uses.
using Fields = std::vector<std::pair<std::string_view, std::vector<double>>>;
void Emit(std::string_view row, const Fields& fields);
void Emit(std::string_view row, const Pairs& pairs);

}  // namespace morvane::bench
