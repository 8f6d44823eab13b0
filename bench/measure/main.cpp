// Takes the measurements of ./dev bench: morvane_bench REPETITIONS IDLE-SECONDS.
// bench/report.py runs it in its own session and reads its output.

#include <cstdlib>
#include <exception>

#include "measure/bench.h"
#include "support/test_environment.h"
#include "support/tray.h"

// Called by the C runtime's start-up; no header declares it.
int wmain(int count, wchar_t** arguments);

int wmain(int count, wchar_t** arguments) {
    using namespace morvane;
    try {
        bench::Require(count == 3, "two arguments");
        const bench::Plan plan{std::stoi(arguments[1]), std::stoi(arguments[2])};
        bench::Require(test::DisposableProfile(), "a disposable profile");
        bench::Require(test::WaitForTaskbar(), "a taskbar");
        test::ResetProfile();
        bench::MeasureTexts(plan);
        bench::MeasureStart(plan);
        bench::MeasureDesktop(plan);
        bench::MeasureGrowth(plan);
        bench::MeasureIdle(plan);
        return EXIT_SUCCESS;
    } catch (const std::exception& fault) {
        bench::Announce(fault.what());
        return EXIT_FAILURE;
    }
}
