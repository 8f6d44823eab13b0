// How often passes run, and how long their effects take.

#include <algorithm>
#include <cstdio>
#include <numeric>

#include "program/scene.h"

namespace morvane::test {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int Trials = 10;

constexpr double Period = 500;  // milliseconds

// An effect comes with the next pass, so its median delay is half a period, plus some on a busy
// machine. These wide limits catch a program that needs two extra passes, or whose passes are more
// than two seconds apart. Another test measures the interval.
constexpr Milliseconds MaxMedian{2 * Period};
constexpr Milliseconds MaxSingle{6 * Period};

using LatencyTest = ProgramTest;

Milliseconds Since(Clock::time_point start) {
    return Clock::now() - start;
}

// Returns at a different moment of the period in each trial; together the trials cover it evenly.
bool WaitForMomentOf(const Sentinel& sentinel, int trial) {
    const std::size_t before = sentinel.PassTicks().size();
    if (!WaitUntil([&] { return sentinel.PassTicks().size() > before; })) {
        return false;
    }
    const ULONGLONG pass = sentinel.PassTicks().back();
    const auto moment = static_cast<ULONGLONG>(Period * trial / Trials);
    return WaitUntil([=] { return GetTickCount64() >= pass + moment; });
}

void Report(const char* what, std::vector<Milliseconds> latencies) {
    std::sort(latencies.begin(), latencies.end());
    const Milliseconds sum =
        std::accumulate(latencies.begin(), latencies.end(), Milliseconds::zero());
    const Milliseconds median = latencies[latencies.size() / 2];
    std::printf("measured: %s: %zu trials, min %.0f, median %.0f, mean %.0f, max %.0f ms\n", what,
                latencies.size(), latencies.front().count(), median.count(),
                sum.count() / static_cast<double>(latencies.size()), latencies.back().count());
    EXPECT_LE(median.count(), MaxMedian.count()) << what;
    EXPECT_LE(latencies.back().count(), MaxSingle.count()) << what;
}

TEST_F(LatencyTest, PassesComeTwiceASecond) {
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\n");
    sentinel.ExpectPassesTwiceASecond("nothing open");
}

TEST_F(LatencyTest, NewWindowIsPinnedByTheNextPass) {
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\nTarget\n");
    std::vector<Milliseconds> latencies;
    for (int trial = 0; trial < Trials; ++trial) {
        ASSERT_TRUE(WaitForMomentOf(sentinel, trial)) << trial;
        const Clock::time_point start = Clock::now();
        const HWND window = Window(L"A target");
        ASSERT_TRUE(BecomesTopmost(window)) << trial;
        latencies.push_back(Since(start));
        Other().Destroy(window);
    }
    Report("window appears -> topmost", latencies);
}

TEST_F(LatencyTest, EditedFileTakesEffectWithTheNextPass) {
    const Sentinel sentinel(Other());
    const HWND window = Window(L"A target", 300, 300);
    const Program program = StartedProgram("Sentinel\n");
    std::vector<Milliseconds> latencies;
    for (int trial = 0; trial < Trials; ++trial) {
        const int width = 310 + 10 * trial;
        ASSERT_TRUE(WaitForMomentOf(sentinel, trial)) << trial;
        const Clock::time_point start = Clock::now();
        EditSettings("Sentinel\ntarget " + std::to_string(width) + " 0\n");
        ASSERT_TRUE(WaitUntil([&] { return WindowSize(window).cx == width; })) << trial;
        latencies.push_back(Since(start));
    }
    Report("file edited -> effect", latencies);
}

}  // namespace
}  // namespace morvane::test
