#pragma once

// The rows of the report, in groups that need the same windows.

#include "measure/sampling.h"

namespace morvane::bench {

// Identity of a title, and reading of settings files. Needs no windows.
void MeasureTexts(const Plan& plan);

// From the start of the program to its icon. Needs a desktop without other windows.
void MeasureStart(const Plan& plan);

// Passes and the menu, over 500 windows of another process that it opens and closes.
void MeasureDesktop(const Plan& plan);

// A pass over more and more windows, which it opens and closes.
void MeasureGrowth(const Plan& plan);

// The program and the bare loop, side by side, left to themselves.
void MeasureIdle(const Plan& plan);

}  // namespace morvane::bench
