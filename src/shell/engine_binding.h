#pragma once

namespace morvane {

// Gives the engine the current settings path and control window. Called before every command and
// every pass, because either may have changed since the last one.
void RefreshEngineBinding();

}  // namespace morvane
