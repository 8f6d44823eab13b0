// Takes the measurements of ./dev bench: morvane_bench [REPETITIONS [IDLE-SECONDS]].
// bench/report.py runs it in its own session and reads its output.

#include <cstdlib>
#include <exception>
#include <string>

#include "measure/rows.h"
#include "measure/sampling.h"
#include "support/test_environment.h"
#include "support/tray.h"

namespace morvane::bench {

namespace {

void MeasureAll(const Plan& plan) {
    Require(test::DisposableProfile(), "a disposable profile");
    Require(test::WaitForTaskbar(), "a taskbar");
    test::ResetProfile();
    MeasureTexts(plan);
    MeasureStart(plan);
    MeasureDesktop(plan);
    MeasureGrowth(plan);
    MeasureIdle(plan);
}

}  // namespace

}  // namespace morvane::bench

// Called by the C runtime's start-up; no header declares it.
int wmain(int count, wchar_t** arguments);

int wmain(int count, wchar_t** arguments) {
    morvane::bench::Plan plan;
    if (count > 1) {
        plan.repetitions = std::stoi(arguments[1]);
    }
    if (count > 2) {
        plan.idleSeconds = std::stoi(arguments[2]);
    }
    try {
        morvane::bench::MeasureAll(plan);
        return EXIT_SUCCESS;
    } catch (const std::exception& fault) {
        morvane::bench::Announce(fault.what());
        return EXIT_FAILURE;
    }
}
