#pragma once

// What a pass is compared with: the platform calls that it makes, made by a loop that does nothing
// else. Nothing is stored, sorted or looked up; which windows are pinned is told beforehand.

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

// The calls of a pass that has pinned these windows before and pins them again.
void LookAtAndPin(const PinnedWindows& pinned);

// The visible windows whose titles begin with the unit, lowest handle first.
[[nodiscard]] std::size_t FindMarked(wchar_t mark, std::span<HWND> found);

// Opens a file, reads it to its end and closes it. The buffer has to be larger than the file; the
// length read.
std::size_t ReadFileOnce(const wchar_t* path, std::span<char> buffer);

// The same with a buffer of its own, as large as the file, and then one conversion of all bytes.
// The number of units.
std::size_t ReadAndConvertFile(const wchar_t* path);

}  // namespace morvane::bare
