// Runs the program through a day's worth of passes while everything around it changes.

#include <chrono>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <exception>
#include <optional>
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

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
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

void PrintProgress(const Soak& soak, std::uint64_t passesBefore, double seconds) {
    const std::uint64_t passes = soak.driver.Passes();
    std::printf("soak: %" PRIu64 " passes, %.0f per second, %" PRIu64
                " steps, 0 differences, %zu kernel handles, %zu KiB private, %.0f s\n",
                passes, static_cast<double>(passes - passesBefore) / seconds,
                soak.churn.counts.steps, KernelHandles(soak.processId),
                PrivateKilobytes(soak.processId), SecondsSince(soak.start));
    static_cast<void>(std::fflush(stdout));
}

void PrintDifference(Soak& soak, const std::string& wrong) {
    std::printf(
        "\nFAILED after %" PRIu64 " passes; to repeat the steps: --seed %" PRIu32 "\n%s%s\n",
        soak.driver.Passes(), soak.options->seed, wrong.c_str(), Account(soak.churn).c_str());
    static_cast<void>(std::fflush(stdout));
}

bool IsTimeUp(const Soak& soak) {
    return soak.driver.Passes() >= soak.options->passes ||
           (soak.options->minutes > 0 && SecondsSince(soak.start) > soak.options->minutes * 60);
}

// A short run must not spend all its time on warming up.
bool IsWarm(const Soak& soak) {
    constexpr double Share = 0.25;
    return soak.driver.Passes() >= WarmUpPasses ||
           (soak.options->minutes > 0 &&
            SecondsSince(soak.start) > soak.options->minutes * 60 * Share);
}

// False on a difference.
bool RunSteps(Soak& soak) {
    Clock::time_point lastProgress = soak.start;
    std::uint64_t lastPasses = 0;
    // Goes on until windows are held; otherwise the exit would have nothing to release.
    while (!IsTimeUp(soak) || soak.churn.model.remembered.empty()) {
        const std::string wrong = RunStep(soak.churn);
        if (!wrong.empty()) {
            PrintDifference(soak, wrong);
            return false;
        }
        if (soak.warmPasses == 0 && IsWarm(soak)) {
            soak.warm = MeasureConsumption(soak.processId);
            soak.warmPasses = soak.driver.Passes();
        }
        if (Clock::now() - lastProgress > ProgressInterval) {
            PrintProgress(soak, lastPasses, SecondsSince(lastProgress));
            lastPasses = soak.driver.Passes();
            lastProgress = Clock::now();
        }
    }
    if (soak.warmPasses == 0) {
        std::printf("FAILED: too short to warm up\n");
    }
    return soak.warmPasses > 0;
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
                std::to_string(counts.repeatedChecks) + " repeated checks, " +
                    std::to_string(counts.extraPasses) + " extra passes for the order, " +
                    std::to_string(counts.wrongOrdersDespiteRightRequests) +
                    " wrong orders despite right requests");
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
bool EndsCleanly(Soak& soak, const Program& program) {
    if (program.ExitByCommand() != 0U) {
        std::printf("FAILED: the program did not exit properly\n");
        return false;
    }
    ReleaseModel(soak.churn.model);
    const std::string differences =
        WindowDifferences(soak.churn.model) + soak.churn.settings.Difference();
    if (!differences.empty()) {
        PrintDifference(soak, "after the exit:\n" + differences);
    }
    return differences.empty();
}

bool Run(const Options& options) {
    std::printf("soak: --seed %" PRIu32 "\n", options.seed);
    ResetProfile();
    const Program program;
    Soak soak(options, program);
    BeginChurn(soak.churn);
    if (!RunSteps(soak)) {
        return false;
    }
    const double seconds = SecondsSince(soak.start);
    const std::string wrong = RunQuietStep(soak.churn);
    if (!wrong.empty()) {
        PrintDifference(soak, wrong);
        return false;
    }
    const Consumption last = MeasureConsumption(soak.processId);
    const std::string rows = ReportRows(soak, last, seconds);
    std::printf("%s", rows.c_str());
    const std::string grown = Growth(soak.warm, last);
    if (!grown.empty()) {
        std::printf("FAILED: %s\n", grown.c_str());
        return false;
    }
    if (!EndsCleanly(soak, program)) {
        return false;
    }
    if (!options.reportPath.empty() && !WriteFileBytes(options.reportPath, rows)) {
        std::printf("FAILED: cannot write the report\n");
        return false;
    }
    return true;
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
        return Run(*options) ? 0 : 1;
    } catch (const std::exception& error) {
        std::printf("FAILED: %s\n", error.what());
        return 1;
    }
}
