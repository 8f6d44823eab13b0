#pragma once

namespace morvane {

// Deletes the Startup shortcut and the data folder with everything in it. True when nothing of the
// folder is left; what was deleted before a failure stays deleted. Links inside the folder are
// removed and never entered.
[[nodiscard]] bool RemoveAllData();

}  // namespace morvane
