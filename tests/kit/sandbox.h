#pragma once

#include "kit/level.h"

namespace morvane::kit {

// Writes a configuration of Windows Sandbox that runs verify.cmd in this folder, and opens it.
// Returns the exit code.
[[nodiscard]] int OpenSandbox(const Kit& kit);

}  // namespace morvane::kit
