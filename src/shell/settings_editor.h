#pragma once

// The settings file as the user meets it: it exists, and Notepad opens it.

#include <string>

namespace morvane {

// Binds the engine and writes its list to the settings path when nothing of that name exists.
// False when there is no settings path or the file could not be written.
bool EnsureSettingsFile();

// The command: makes sure of the file, reloads it and opens it in the editor. Failures are silent.
void OpenSettings();

// Starts Notepad on the path and does not wait for it; does nothing for an empty path.
void OpenInEditor(const std::wstring& path);

}  // namespace morvane
