#pragma once

// Takes times and hands them to the report: one line of JSON per row on standard output, progress
// on standard error.

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "base/win.h"
#include "support/actor.h"

namespace morvane::bench {

struct Plan {
    int repetitions = 0;
    int idleSeconds = 0;
};

// The rows of the report, grouped by the windows they need. The first needs none.
void MeasureTexts(const Plan& plan);
void MeasureStart(const Plan& plan);
void MeasureDesktop(const Plan& plan);
void MeasureGrowth(const Plan& plan);
void MeasureIdle(const Plan& plan);

// Throws std::runtime_error: measuring the wrong thing is worse than measuring nothing.
void Require(bool condition, const std::string& what);

void Announce(const std::string& what);

using Clock = std::chrono::steady_clock;

[[nodiscard]] inline double MicrosecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

// Measures the microseconds per execution, averaged over all of them.
template <typename Work>
[[nodiscard]] std::function<double()> TimeOf(Work work, int executions = 1) {
    return [=] {
        const Clock::time_point start = Clock::now();
        for (int execution = 0; execution < executions; ++execution) {
            work();
        }
        return MicrosecondsSince(start) / executions;
    };
}

// What the program's code takes, and what it is compared with.
struct Pairs {
    std::vector<double> ours;
    std::vector<double> bare;
};

// Measures both in turn, alternating which goes first, so that a temporary disturbance affects
// both. The first turn warms up and does not count.
[[nodiscard]] Pairs InTurn(int repetitions, const std::function<double()>& ours,
                           const std::function<double()>& bare);

void Emit(const std::string& row, const Pairs& pairs);

// The titles of the windows of the other process end in numbers.
inline constexpr wchar_t PlainTitle[] = L"Document - an ordinary window of another program ";
inline constexpr wchar_t PinnedTitle[] = L"Pinned - a window of another program ";
[[nodiscard]] std::vector<HWND> AddWindows(test::Actor& actor, int count, const wchar_t* title);

inline constexpr int EntryCount = 100;

// As many entries, which no title contains.
[[nodiscard]] std::string UnmatchedEntries();

// The same, but all pinned titles contain the last one: earlier it would rule out shorter patterns
// by their length.
[[nodiscard]] std::string EntriesWithMatch();

// Binds the engine as the program does, to a settings file with these lines, one entry each.
void BindEngine(const std::string& lines);

}  // namespace morvane::bench
