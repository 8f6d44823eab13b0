#include "pin/settings_sync.h"

#include "base/win.h"
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
    // A missing file is written twice in a row: creating it and saving to it are two steps, and
    // the second one also runs after the first. Harmless, and kept.
    if (GetFileAttributesW(engine.settingsPath.c_str()) == INVALID_FILE_ATTRIBUTES) {
        static_cast<void>(WriteSettingsFile(engine.settingsPath, engine.pinList));
    }
    static_cast<void>(WriteSettingsFile(engine.settingsPath, engine.pinList));
}

void SaveSettingsIfBound() {
    if (!Engine().settingsPath.empty()) {
        SaveSettings();
    }
}

}  // namespace morvane
