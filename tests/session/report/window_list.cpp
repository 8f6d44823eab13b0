#include "session/report/window_list.h"

#include <algorithm>
#include <array>

namespace morvane::report {

namespace {

BOOL CALLBACK AddShown(HWND window, LPARAM parameter) {
    if (IsWindowVisible(window) == FALSE || GetWindow(window, GW_OWNER) != nullptr) {
        return TRUE;
    }
    std::array<wchar_t, 256> title{};
    if (GetWindowTextW(window, title.data(), static_cast<int>(title.size())) > 0) {
        auto& windows = *reinterpret_cast<std::vector<ShownWindow>*>(parameter);
        const bool topmost = (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
        windows.push_back({window, title.data(), topmost, window == GetForegroundWindow()});
    }
    return TRUE;
}

}  // namespace

std::vector<ShownWindow> ShownWindows() {
    std::vector<ShownWindow> windows;
    EnumWindows(AddShown, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

const ShownWindow* FindShown(const std::vector<ShownWindow>& windows, std::wstring_view text) {
    const auto found =
        std::find_if(windows.begin(), windows.end(), [&](const ShownWindow& candidate) {
            return candidate.title.find(text) != std::wstring::npos;
        });
    return found != windows.end() ? &*found : nullptr;
}

}  // namespace morvane::report
