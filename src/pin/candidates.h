#pragma once

// The windows that the menu offers.

#include <cstddef>
#include <string>
#include <vector>

#include "base/win.h"

namespace morvane {

struct CandidateWindow {
    HWND window = nullptr;
    std::wstring title;  // as read when the list was built
};

// Unchanged between rebuilds: the menu's command numbers are positions in it.
[[nodiscard]] const std::vector<CandidateWindow>& CandidateList();

// The window in that row of the menu; null if there is no such row.
[[nodiscard]] const CandidateWindow* CandidateInRow(std::size_t row);

// Fills the list with the visible, unowned, titled windows that are not ours, sorted by title.
void RebuildCandidates();

}  // namespace morvane
