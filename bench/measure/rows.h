#pragma once

// The rows of the report, grouped by the windows they need.

#include "measure/sampling.h"

namespace morvane::bench {

// The identity of titles, and reading settings files. Needs no windows.
void MeasureTexts(const Plan& plan);

// From the start of the program to its icon. Needs a desktop without other windows.
void MeasureStart(const Plan& plan);

// Passes and the menu, over 500 windows of another process that it opens and closes.
void MeasureDesktop(const Plan& plan);

// A pass over more and more windows, which it opens and closes.
void MeasureGrowth(const Plan& plan);

// The program and the bare loop, idling side by side.
void MeasureIdle(const Plan& plan);

}  // namespace morvane::bench
