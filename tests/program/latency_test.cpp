// How long the user waits for the effect of a new window or of an edited file.

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "program/scene.h"

namespace morvane::test {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int Trials = 20;

// One period is 500 milliseconds; a loaded machine adds to it. A program that needs two periods
// more for anything, or polls more slowly than once a second, exceeds the median.
constexpr Milliseconds MaxMedian{1'000};
constexpr Milliseconds MaxSingle{3'000};

using LatencyTest = ProgramTest;

Milliseconds Since(Clock::time_point start) {
    return Clock::now() - start;
}

// The trials start at phases of the timer spread over its period.
void DriftThroughThePeriod(int trial) {
    Sleep(static_cast<DWORD>((trial * 137) % 500));
}

void Report(const char* what, std::vector<Milliseconds> latencies) {
    std::sort(latencies.begin(), latencies.end());
    const Milliseconds sum =
        std::accumulate(latencies.begin(), latencies.end(), Milliseconds::zero());
    const Milliseconds median = latencies[latencies.size() / 2];
    std::printf("%s: %zu trials, min %.0f, median %.0f, mean %.0f, max %.0f ms\n", what,
                latencies.size(), latencies.front().count(), median.count(),
                sum.count() / static_cast<double>(latencies.size()), latencies.back().count());
    EXPECT_LE(median.count(), MaxMedian.count()) << what;
    EXPECT_LE(latencies.back().count(), MaxSingle.count()) << what;
}

TEST_F(LatencyTest, NewWindowIsPinnedWithinAPeriod) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const Program program = StartedProgram();
    std::vector<Milliseconds> latencies;
    for (int trial = 0; trial < Trials; ++trial) {
        DriftThroughThePeriod(trial);
        const Clock::time_point start = Clock::now();
        const HWND window = actor.Create({.title = L"A target"});
        ASSERT_TRUE(BecomesTopmost(window)) << trial;
        latencies.push_back(Since(start));
        actor.Destroy(window);
    }
    Report("window appears -> topmost", latencies);
}

TEST_F(LatencyTest, EditedFileTakesEffectWithinAPeriod) {
    Actor actor;
    const HWND window = actor.Create({.title = L"A target"});
    const Program program = StartedProgram();
    std::vector<Milliseconds> latencies;
    for (int trial = 0; trial < Trials; ++trial) {
        const bool pin = trial % 2 == 0;
        DriftThroughThePeriod(trial);
        const Clock::time_point start = Clock::now();
        ASSERT_TRUE(EditSettings(pin ? "target\n" : "@pinning=0\n"));
        ASSERT_TRUE(pin ? BecomesTopmost(window) : BecomesOrdinary(window)) << trial;
        latencies.push_back(Since(start));
    }
    Report("file edited -> effect", latencies);
}

}  // namespace
}  // namespace morvane::test
