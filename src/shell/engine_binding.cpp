#include "shell/engine_binding.h"

#include <string>
#include <utility>

#include "base/process.h"
#include "pin/engine.h"
#include "shell/data_folder.h"

namespace morvane {

void RefreshEngineBinding() {
    PinEngine& engine = Engine();
    std::wstring path = GetSettingsPath();
    if (engine.settingsPath != path) {
        engine.settingsPath = std::move(path);
    }
    engine.ownWindow = Process().controlWindow;
}

}  // namespace morvane
