#pragma once

#include <string>

// What the tests change in the user's profile: the data folder, a folder of their own beside it,
// the Startup folder, which they empty, and values in the registry.
namespace morvane::kit {

// Found by every copy of the kit, and not lost with one.
[[nodiscard]] std::wstring SavedStateFolder();

// True between a Save and its Restore.
[[nodiscard]] bool IsStateSaved();

// From then on Windows starts the program at the next sign-in, which is to restore. Returns false,
// with nothing to restore, where the state cannot be kept in full: links, say.
[[nodiscard]] bool SaveUserState();

// Puts everything back and deletes what was saved. If it fails, it can be tried again. Changes
// nothing if nothing was saved.
[[nodiscard]] bool RestoreUserState();

}  // namespace morvane::kit
