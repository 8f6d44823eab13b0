#include "support/window_state.h"

#include <algorithm>

namespace morvane::test {

bool IsTopmost(HWND window) {
    return (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
}

std::vector<HWND> TopLevelWindows() {
    std::vector<HWND> windows;
    EnumWindows(
        [](HWND window, LPARAM list) -> BOOL {
            reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&windows));
    return windows;
}

bool IsAbove(HWND upper, HWND lower) {
    const std::vector<HWND> windows = TopLevelWindows();
    const auto first = std::find(windows.begin(), windows.end(), upper);
    return first != windows.end() && std::find(first + 1, windows.end(), lower) != windows.end();
}

std::vector<HWND> VisibleWindowsOfClass(const std::wstring& className) {
    std::vector<HWND> windows = TopLevelWindows();
    const auto unwanted = [&className](HWND window) {
        return IsWindowVisible(window) == FALSE || WindowClass(window) != className;
    };
    windows.erase(std::remove_if(windows.begin(), windows.end(), unwanted), windows.end());
    return windows;
}

RECT WindowRect(HWND window) {
    RECT rect{};
    return GetWindowRect(window, &rect) != FALSE ? rect : RECT{};
}

SIZE WindowSize(HWND window) {
    const RECT rect = WindowRect(window);
    return {rect.right - rect.left, rect.bottom - rect.top};
}

std::wstring WindowTitle(HWND window) {
    std::wstring title(256, L'\0');
    for (;;) {
        const int length = GetWindowTextW(window, title.data(), static_cast<int>(title.size()));
        const auto units = static_cast<std::size_t>(std::max(length, 0));
        // A full buffer may mean a truncated title.
        if (units + 1 < title.size()) {
            title.resize(units);
            return title;
        }
        title.resize(title.size() * 2);
    }
}

std::wstring WindowClass(HWND window) {
    // Class names have at most 256 units.
    std::wstring name(257, L'\0');
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    name.resize(static_cast<std::size_t>(std::max(length, 0)));
    return name;
}

DWORD ProcessOf(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process;
}

}  // namespace morvane::test
