#pragma once

// The platform calls of a pass and nothing else: nothing is stored, sorted or looked up, and the
// windows to pin are known beforehand.

#include <span>
#include <string>

#include "base/win.h"

namespace morvane::bare {

// The calls of a pass that pins nothing: enumerate, visible, owner, class, title.
void LookAtWindows();

struct PinnedWindows {
    std::span<const HWND> inOrder;  // the order of the requests
    wchar_t mark = L'\0';           // the first unit of their titles, and of no other title
};

// The calls of a pass that pinned these windows before and pins them again.
void LookAtAndPin(const PinnedWindows& pinned);

// The visible windows whose titles begin with the unit, lowest handle first.
[[nodiscard]] std::size_t FindMarked(wchar_t mark, std::span<HWND> found);

// Opens a file, reads it to its end and closes it; returns the length. The buffer must be larger
// than the file.
std::size_t ReadFileOnce(const wchar_t* path, std::span<char> buffer);

// The same with its own buffer of the file's size; then converts all bytes at once and returns the
// number of units.
std::size_t ReadAndConvertFile(const wchar_t* path);

}  // namespace morvane::bare
