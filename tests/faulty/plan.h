#pragma once

#include <span>

#include "faulty/fault.h"

namespace morvane::faulty {

// Makes the functions fail that MORVANE_FAULTS names. Ends the process with PlanFailed when the
// plan cannot be read, or names a function that is not among the faults or not imported.
bool CarryOutPlan(std::span<Fault* const> faults);

}  // namespace morvane::faulty
