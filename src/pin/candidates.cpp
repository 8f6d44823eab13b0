#include "pin/candidates.h"

#include <algorithm>

#include "base/process.h"
#include "pin/window_query.h"

namespace morvane {
namespace {

std::vector<CandidateWindow> candidateList;

}  // namespace

const std::vector<CandidateWindow>& CandidateList() {
    return candidateList;
}

const CandidateWindow* CandidateInRow(std::size_t row) {
    return row < candidateList.size() ? &candidateList[row] : nullptr;
}

void RebuildCandidates() {
    candidateList.clear();
    ForEachTopLevelWindow([](HWND window) {
        // By class alone: the control window itself is message-only and never enumerated.
        if (IsWindowVisible(window) == FALSE || HasOwner(window) ||
            ReadClassName(window).View() == ControlWindowClass) {
            return;
        }
        const WindowTitle title = ReadTitle(window);
        if (title.length > 0) {
            candidateList.push_back({window, std::wstring(title.View())});
        }
    });
    // By code unit, without locale: the same order on every machine.
    std::ranges::sort(candidateList, {}, &CandidateWindow::title);
}

}  // namespace morvane
