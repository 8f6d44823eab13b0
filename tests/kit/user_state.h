#pragma once

#include <string>

// What the tests change in the user's profile: the data folder, the Startup folder, which they
// empty, and values in the registry.
namespace morvane::kit {

enum class Saved { Nothing, Ours, SomebodyElses };

// A folder written by Save and not yet taken back by Restore.
[[nodiscard]] Saved StateIn(const std::wstring& folder);

// Returns false, with nothing to restore, where that state cannot be kept in full: links, say.
[[nodiscard]] bool SaveUserState(const std::wstring& folder);

// Puts everything back and deletes the folder. If it fails, it can be tried again.
[[nodiscard]] bool RestoreUserState(const std::wstring& folder);

}  // namespace morvane::kit
