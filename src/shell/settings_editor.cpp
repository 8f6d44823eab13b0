#include "shell/settings_editor.h"

#include <array>

#include "base/files.h"
#include "base/win_shell.h"
#include "pin/engine.h"
#include "pin/settings_sync.h"
#include "settings/settings_file.h"
#include "shell/data_folder.h"
#include "shell/engine_binding.h"

namespace morvane {
namespace {

// Notepad rather than the editor associated with text files: it comes with Windows and opens at
// once. The full path keeps out another notepad.exe on the search path.
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
    const std::wstring& path = engine.settingsPath;
    return !path.empty() && (PathExists(path) || WriteSettingsFile(path, engine.pinList));
}

void OpenSettings() {
    // If only the file is missing, Notepad offers to create it.
    EnsureSettingsFile();
    RefreshEngineBinding();
    ReloadSettings();
    OpenInEditor(GetSettingsPath());
}

void OpenInEditor(const std::wstring& path) {
    if (path.empty()) {
        return;
    }
    // Quoted because a user's name may contain blanks; a path cannot contain a quote.
    const std::wstring parameters = L"\"" + path + L"\"";
    ShellExecuteW(nullptr, L"open", EditorPath().c_str(), parameters.c_str(), nullptr, SW_SHOW);
}

}  // namespace morvane
