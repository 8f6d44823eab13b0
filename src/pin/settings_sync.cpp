#include "pin/settings_sync.h"

#include "base/files.h"
#include "pin/engine.h"
#include "settings/settings_file.h"

namespace morvane {

void ReloadSettings() {
    PinEngine& engine = Engine();
    engine.pinList =
        engine.settingsPath.empty() ? PinList{} : ReadSettingsFile(engine.settingsPath);
}

void SaveSettings() {
    const PinEngine& engine = Engine();
    // A missing file is created and then saved like any other, so it is written twice.
    if (!PathExists(engine.settingsPath)) {
        WriteSettingsFile(engine.settingsPath, engine.pinList);
    }
    WriteSettingsFile(engine.settingsPath, engine.pinList);
}

void SaveSettingsIfBound() {
    if (!Engine().settingsPath.empty()) {
        SaveSettings();
    }
}

}  // namespace morvane
