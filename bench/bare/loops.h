#pragma once

// What the program is compared with: the platform calls of its work and next to nothing else.
// Nothing is stored, sorted or looked up, and the windows to pin are known beforehand.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "base/win.h"
#include "pin/pin_list.h"

namespace morvane::bare {

// The calls of a pass that pins nothing: enumerate, visible, owner, class, title.
void LookAtWindows();

// The first unit of the titles of the windows to pin, and of no other title.
inline constexpr wchar_t PinnedMark = L'P';

// The calls of a pass that pinned these windows before and pins them again, in this order.
void LookAtAndPin(std::span<const HWND> pinned);

// The calls that build and destroy the menu, without the few for files, folders and the active
// window. Returns the number of rows appended.
unsigned BuildMenuOnce();

// Opens a file, reads it to its end or until the buffer is full, and closes it; returns the length.
std::size_t ReadFileOnce(const wchar_t* path, std::span<char> buffer);

// The same for a file of that size, with its own buffer; then converts all bytes at once and
// returns the number of units.
std::size_t ReadAndConvertFile(const wchar_t* path, std::size_t size);

// The identity rule in its plainest form: copies and lower-cases both sides for each comparison.
[[nodiscard]] std::int32_t FindByCopies(const PinList& list, std::wstring_view title);

}  // namespace morvane::bare
