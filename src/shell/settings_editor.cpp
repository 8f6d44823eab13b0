#include "shell/settings_editor.h"

#include <array>

#include "base/win_shell.h"
#include "pin/engine.h"
#include "pin/engine_binding.h"
#include "pin/settings_sync.h"
#include "settings/settings_file.h"
#include "shell/data_folder.h"

namespace morvane {

namespace {

// Always Notepad, never the editor associated with text files: it is on every machine, and it
// opens a file at once. The full path keeps a foreign notepad.exe on the search path out.
std::wstring EditorPath() {
    std::array<wchar_t, MAX_PATH> system{};
    const UINT length = GetSystemDirectoryW(system.data(), MAX_PATH);
    if (length == 0 || length >= MAX_PATH) {
        return L"notepad.exe";
    }
    return std::wstring(system.data(), length) + L"\\notepad.exe";
}

}  // namespace

bool EnsureSettingsFile() {
    RefreshEngineBinding();
    const PinEngine& engine = Engine();
    if (engine.settingsPath.empty()) {
        return false;
    }
    if (GetFileAttributesW(engine.settingsPath.c_str()) != INVALID_FILE_ATTRIBUTES) {
        return true;
    }
    return WriteSettingsFile(engine.settingsPath, engine.pinList);
}

void OpenSettings() {
    // Without a file the editor offers to create one; there is nothing better to do about it.
    static_cast<void>(EnsureSettingsFile());
    RefreshEngineBinding();
    ReloadSettings();
    OpenInEditor(GetSettingsPath());
}

void OpenInEditor(const std::wstring& path) {
    if (path.empty()) {
        return;
    }
    // Quoted for the blanks of a user's name; a path cannot hold a quote itself.
    const std::wstring parameters = L"\"" + path + L"\"";
    ShellExecuteW(nullptr, L"open", EditorPath().c_str(), parameters.c_str(), nullptr, SW_SHOW);
}

}  // namespace morvane
