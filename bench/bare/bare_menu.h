#pragma once

// The platform calls that prepare and build the menu, and nothing else.

namespace morvane::bare {

// Also destroys the menu. Returns the number of rows appended.
unsigned BuildMenuOnce(const wchar_t* settingsPath, const wchar_t* dataFolder);

}  // namespace morvane::bare
