#pragma once

namespace morvane {

// Gives the engine the current settings path and control window. Called before every pass and every
// change of the list, because either may have changed since the last one.
void RefreshEngineBinding();

}  // namespace morvane
