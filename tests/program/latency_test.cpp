// How often passes run, and how long their effects take.

#include <algorithm>
#include <cstdio>
#include <functional>
#include <numeric>

#include "program/scene.h"

namespace morvane::test {
namespace {

constexpr int Trials = 10;

constexpr double Period = 500;  // milliseconds

// A change during a pass may come too late for it, and has to wait for the next one.
constexpr std::size_t MostDuringAPass = 2;

using LatencyTest = ProgramTest;

// A change, and the request to a window that shows its effect, by the performance counter.
struct Effect {
    LONGLONG change = 0;
    LONGLONG request = 0;
};

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

// Waits for the request, and returns when it came.
LONGLONG Arrival(Actor& actor, HWND window,
                 const std::function<bool(const PositionRequest&)>& isEffect) {
    LONGLONG arrival = 0;
    EXPECT_TRUE(WaitUntil([&] {
        const std::vector<PositionRequest> requests = actor.Requests(window);
        const auto found = std::ranges::find_if(requests, isEffect);
        arrival = found == requests.end() ? 0 : found->counter;
        return arrival != 0;
    }));
    return arrival;
}

double MillisecondsOf(const Effect& effect) {
    LARGE_INTEGER frequency{};
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(effect.request - effect.change) * 1000 /
           static_cast<double>(frequency.QuadPart);
}

// The sentinel ends each pass, so that none has ended between a change and its effect in the next
// one.
void ExpectNextPass(const char* what, const Sentinel& sentinel,
                    const std::vector<Effect>& effects) {
    std::vector<double> latencies;
    std::size_t duringAPass = 0;
    for (const Effect& effect : effects) {
        const std::size_t passes = sentinel.PassesBetween(effect.change, effect.request);
        EXPECT_LE(passes, 1U) << what << ", trial " << latencies.size();
        duringAPass += passes;
        latencies.push_back(MillisecondsOf(effect));
    }
    EXPECT_LE(duringAPass, MostDuringAPass) << what;
    std::ranges::sort(latencies);
    const double sum = std::accumulate(latencies.begin(), latencies.end(), 0.0);
    std::printf(
        "measured: %s: %zu trials, %zu during a pass, min %.0f, median %.0f, mean %.0f, "
        "max %.0f ms\n",
        what, latencies.size(), duringAPass, latencies.front(), latencies[latencies.size() / 2],
        sum / static_cast<double>(latencies.size()), latencies.back());
}

TEST_F(LatencyTest, NewWindowIsPinnedByTheNextPass) {
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\nTarget\n");
    std::vector<Effect> effects;
    for (int trial = 0; trial < Trials; ++trial) {
        ASSERT_TRUE(WaitForMomentOf(sentinel, trial)) << trial;
        const HWND window = Window(L"A target");
        const LONGLONG change = CounterNow();
        effects.push_back({change, Arrival(Other(), window, IsTopmostRequest)});
        ASSERT_TRUE(BecomesTopmost(window)) << trial;
        Other().Destroy(window);
    }
    ExpectNextPass("window appears -> topmost", sentinel, effects);
}

TEST_F(LatencyTest, EditedFileTakesEffectWithTheNextPass) {
    const Sentinel sentinel(Other());
    const HWND window = Window(L"A target", 300, 300);
    const Program program = StartedProgram("Sentinel\n");
    std::vector<Effect> effects;
    for (int trial = 0; trial < Trials; ++trial) {
        const int width = 310 + 10 * trial;
        ASSERT_TRUE(WaitForMomentOf(sentinel, trial)) << trial;
        WriteSettings("Sentinel\ntarget " + std::to_string(width) + " 0\n");
        const LONGLONG change = CounterNow();
        const auto grows = [width](const PositionRequest& request) { return request.cx == width; };
        effects.push_back({change, Arrival(Other(), window, grows)});
        ASSERT_TRUE(WaitUntil([&] { return WindowSize(window).cx == width; })) << trial;
    }
    ExpectNextPass("file edited -> effect", sentinel, effects);
}

}  // namespace
}  // namespace morvane::test
