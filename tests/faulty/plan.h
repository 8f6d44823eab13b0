#pragma once

#include <span>

#include "faulty/fault.h"

namespace morvane::faulty {

// Makes the functions named by MORVANE_FAULTS fail. Ends the process with PlanFailed if the plan is
// malformed, or names a function that is not among the faults or not imported.
bool CarryOutPlan(std::span<Fault* const> faults);

}  // namespace morvane::faulty
