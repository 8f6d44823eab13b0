// Runs the program through a day's worth of passes while everything around it changes.

#include <chrono>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <optional>
#include <stdexcept>
#include <string>

#include "soak/churn.h"
#include "soak/consumption.h"
#include "support/program.h"
#include "support/test_environment.h"
#include "support/test_files.h"

namespace morvane::test {
namespace {

using Clock = std::chrono::steady_clock;

// As many as the program's timer makes in a day.
constexpr std::uint64_t PassesOfADay = 172'800;
constexpr std::uint64_t WarmUpPasses = 3'000;
constexpr double WarmUpShare = 0.25;  // of a short run
constexpr auto ProgressInterval = std::chrono::seconds(15);

struct Options {
    std::uint64_t passes = PassesOfADay;
    double minutes = 0;  // 0: no limit
    std::uint32_t seed = 0;
    std::wstring reportPath;
};

std::optional<Options> ReadOptions(int count, wchar_t** arguments) {
    Options options;
    options.seed = static_cast<std::uint32_t>(Clock::now().time_since_epoch().count());
    for (int at = 1; at + 1 < count; at += 2) {
        const std::wstring name = arguments[at];
        const wchar_t* const value = arguments[at + 1];
        if (name == L"--passes") {
            options.passes = std::wcstoull(value, nullptr, 10);
        } else if (name == L"--minutes") {
            options.minutes = std::wcstod(value, nullptr);
        } else if (name == L"--seed") {
            options.seed = static_cast<std::uint32_t>(std::wcstoul(value, nullptr, 10));
        } else if (name == L"--report") {
            options.reportPath = value;
        } else {
            return std::nullopt;
        }
    }
    return count % 2 == 1 ? std::optional(options) : std::nullopt;
}

struct Soak {
    Soak(const Options& wanted, const Program& program)
        : options(&wanted),
          processId(program.ProcessId()),
          driver(program),
          churn(driver, wanted.seed) {}

    const Options* options;
    DWORD processId;
    PassDriver driver;
    Churn churn;
    Consumption warm;
    std::uint64_t warmPasses = 0;  // when warm was measured; 0: not yet
    Clock::time_point start = Clock::now();
};

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// So many passes, or that share of the minutes, if they are limited.
bool IsReached(const Soak& soak, std::uint64_t passes, double share) {
    const double seconds = soak.options->minutes * 60 * share;
    return soak.driver.Passes() >= passes || (seconds > 0 && SecondsSince(soak.start) > seconds);
}

void PrintProgress(const Soak& soak) {
    const std::uint64_t passes = soak.driver.Passes();
    const double seconds = SecondsSince(soak.start);
    std::printf("soak: %" PRIu64 " passes, %.0f per second, %" PRIu64
                " steps, 0 differences, %zu kernel handles, %zu KiB private, %.0f s\n",
                passes, static_cast<double>(passes) / seconds, soak.churn.counts.steps,
                KernelHandles(soak.processId), PrivateKilobytes(soak.processId), seconds);
    static_cast<void>(std::fflush(stdout));
}

void FailOn(Soak& soak, const std::string& difference) {
    if (!difference.empty()) {
        throw std::runtime_error("after " + std::to_string(soak.driver.Passes()) +
                                 " passes; to repeat the steps: --seed " +
                                 std::to_string(soak.options->seed) + "\n" + difference +
                                 Account(soak.churn));
    }
}

void RunSteps(Soak& soak) {
    Clock::time_point lastProgress = soak.start;
    // Goes on until windows are held; otherwise the exit would have nothing to release.
    while (!IsReached(soak, soak.options->passes, 1) || soak.churn.model.remembered.empty()) {
        FailOn(soak, RunStep(soak.churn));
        if (soak.warmPasses == 0 && IsReached(soak, WarmUpPasses, WarmUpShare)) {
            soak.warm = MeasureConsumption(soak.processId);
            soak.warmPasses = soak.driver.Passes();
        }
        if (Clock::now() - lastProgress > ProgressInterval) {
            PrintProgress(soak);
            lastProgress = Clock::now();
        }
    }
    if (soak.warmPasses == 0) {
        throw std::runtime_error("too short to warm up");
    }
    FailOn(soak, RunQuietStep(soak.churn));
}

std::string Row(const std::string& what, const std::string& how, const std::string& result) {
    return "| " + what + " | " + how + " | " + result + " |\n";
}

std::string BeforeAndAfter(std::size_t before, std::size_t after) {
    return std::to_string(before) + " and " + std::to_string(after);
}

std::string ReportRows(const Soak& soak, const Consumption& last, double seconds) {
    const ChurnCounts& counts = soak.churn.counts;
    const std::uint64_t passes = soak.driver.Passes();
    std::string rows = Row("Passes with churn",
                           std::to_string(passes) + " passes, " + std::to_string(counts.steps) +
                               " steps, seed " + std::to_string(soak.options->seed),
                           std::to_string(std::llround(seconds)) + " s, 0 differences");
    rows += Row("Among the steps",
                "menu opened " + std::to_string(counts.menus) + " times, About " +
                    std::to_string(counts.abouts) + " times, " + std::to_string(counts.hangs) +
                    " hung processes, " + std::to_string(counts.refusedAdditions) +
                    " additions to a full list",
                std::to_string(counts.secondLooks) + " second looks, " +
                    std::to_string(counts.waits) + " waits for the end of a pass, " +
                    std::to_string(counts.wrongOrders) + " wrong orders despite right requests");
    const std::string when = "after " + std::to_string(soak.warmPasses) + " passes, and at the end";
    rows +=
        Row("Kernel handles", when, BeforeAndAfter(soak.warm.kernelHandles, last.kernelHandles));
    rows += Row("Private memory", when,
                BeforeAndAfter(soak.warm.privateKilobytes, last.privateKilobytes) + " KiB");
    rows += Row("Room for menus in the session", when,
                BeforeAndAfter(soak.warm.menuRoom, last.menuRoom));
    return rows;
}

// After the exit, everything pinned must be released and the settings file unchanged.
void End(Soak& soak, const Program& program) {
    if (program.ExitByCommand() != 0U) {
        throw std::runtime_error("the program did not exit properly");
    }
    ReleaseModel(soak.churn.model);
    FailOn(soak, WindowDifferences(soak.churn.model) + soak.churn.settings.Difference());
}

void Run(const Options& options) {
    std::printf("soak: --seed %" PRIu32 "\n", options.seed);
    ResetProfile();
    const Program program;
    Soak soak(options, program);
    BeginChurn(soak.churn);
    RunSteps(soak);
    const double seconds = SecondsSince(soak.start);
    const Consumption last = MeasureConsumption(soak.processId);
    const std::string rows = ReportRows(soak, last, seconds);
    std::printf("%s", rows.c_str());
    const std::string grown = Growth(soak.warm, last);
    if (!grown.empty()) {
        throw std::runtime_error(grown);
    }
    End(soak, program);
    if (!options.reportPath.empty() && !WriteFileBytes(options.reportPath, rows)) {
        throw std::runtime_error("cannot write the report");
    }
}

}  // namespace
}  // namespace morvane::test

// Called by the C runtime's start-up; no header declares it.
int wmain(int count, wchar_t** arguments);

int wmain(int count, wchar_t** arguments) {
    using namespace morvane::test;
    const auto options = ReadOptions(count, arguments);
    if (!options) {
        std::printf("usage: morvane_soak [--passes N] [--minutes N] [--seed N] [--report FILE]\n");
        return 2;
    }
    if (!DisposableProfile()) {
        std::printf("refused: this profile is not disposable\n");
        return 2;
    }
    try {
        Run(*options);
        return 0;
    } catch (const std::exception& error) {
        std::printf("FAILED: %s\n", error.what());
        return 1;
    }
}
