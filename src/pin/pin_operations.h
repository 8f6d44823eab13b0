#pragma once

// The operations that change the list. Each writes the settings file at once, if there is a
// settings path, and all but AddWindow bring the desktop in line.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/win.h"

namespace morvane {

// Adds the title, cut to MaxPatternLength, as a pattern without minimum size. Does nothing for an
// empty title, a full list, or a title that is a pattern already. Starts no pass.
void AddWindow(std::wstring_view title);

// Whether a title can get a minimum size: an entry identifies it, or there is room for a new one.
[[nodiscard]] bool HasRoomFor(std::wstring_view title);

// Gives the entry that identifies the title a minimum size (pixels), or adds one; then runs a
// pass. Never removes. Does nothing when the entry would be new and the list is full.
void AddWindowWithMinSize(HWND window, std::int32_t width, std::int32_t height,
                          std::wstring_view title);

// Removes one entry, releases all windows and pins the remaining matches again.
void RemoveEntry(std::size_t index);

// Removes the entry that identifies the title, or adds the title; a pass follows in both cases.
// The engine must have been bound.
void ToggleWindow(std::wstring_view title);

// The master switch. The engine must have been bound.
void SetPinning(bool on);

}  // namespace morvane
