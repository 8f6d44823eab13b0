#pragma once

// The one engine of the process: what the pin operations, the discovery and the passes work on.
// Touched only on the control window's thread.

#include <string>
#include <unordered_set>

#include "base/win.h"
#include "pin/pin_list.h"

namespace morvane {

// The windows that a pass has made topmost and that have to be made ordinary again on release.
// Nothing else is remembered of them: no earlier place, order or size.
using PinnedWindowSet = std::unordered_set<HWND>;

struct PinEngine {
    std::wstring ownClassName;
    HWND ownWindow = nullptr;   // the control window; null until it is bound
    std::wstring settingsPath;  // empty: there is no settings file
    PinList pinList;
    PinnedWindowSet pinnedWindows{8};
};

// Constructed before the entry function runs, destroyed at exit.
[[nodiscard]] PinEngine& Engine();

}  // namespace morvane
