#pragma once

// Start with Windows: a shortcut in the user's Startup folder, whose presence is the only record of
// the setting. COM must have been initialised on the calling thread.

#include <string>

namespace morvane {

// Empty when the shell does not know the folder.
[[nodiscard]] std::wstring GetStartupFolder();

// Empty when GetStartupFolder is.
[[nodiscard]] std::wstring GetStartupShortcutPath();

// Whether anything of the shortcut's name exists, whatever it is and wherever it leads.
[[nodiscard]] bool IsStartupEnabled();

// Writes the shortcut to the running program, over an older one. True when it was saved.
[[nodiscard]] bool InstallStartupShortcut();

// A failure is not reported.
void RemoveStartupShortcut();

}  // namespace morvane
