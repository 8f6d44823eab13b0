#pragma once

// The engine's list and the settings file: the file is the source of truth, every change to the
// list is written to it at once.

namespace morvane {

// Replaces the list by what the file holds; by the default list when there is no settings path.
void ReloadSettings();

// Writes the list to the settings path, which must not be empty. Failures are not reported: the
// next reload shows what the file holds.
void SaveSettings();

// SaveSettings when there is a settings path, otherwise nothing.
void SaveSettingsIfBound();

}  // namespace morvane
