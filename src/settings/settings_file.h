#pragma once

// The settings file as a whole: read into a fresh list, written over in place.

#include <string>

#include "pin/pin_list.h"

namespace morvane {

// Never fails and never creates the file: one that cannot be opened gives the default list
// (pinning on, no entries).
[[nodiscard]] PinList ReadSettingsFile(const std::wstring& path);

// Replaces the file's whole content, creating the file when it is missing (its folder must
// exist). False when it could not be opened or not be written whole.
bool WriteSettingsFile(const std::wstring& path, const PinList& list);

}  // namespace morvane
