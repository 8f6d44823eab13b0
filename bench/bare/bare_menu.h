#pragma once

// What the preparing and building of the menu is compared with: its platform calls alone.

namespace morvane::bare {

// Makes the calls and destroys the menu again. The number of rows that were appended.
unsigned BuildMenuOnce(const wchar_t* settingsPath, const wchar_t* dataFolder);

}  // namespace morvane::bare
