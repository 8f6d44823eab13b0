#include "support/window_state.h"

#include <algorithm>
#include <cstdio>

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

std::vector<HWND> InDesktopOrder(const std::vector<HWND>& windows) {
    std::vector<HWND> all = TopLevelWindows();
    std::erase_if(all, [&windows](HWND window) {
        return std::find(windows.begin(), windows.end(), window) == windows.end();
    });
    return all;
}

bool DesktopShows(const std::vector<HWND>& windows, const std::function<void()>& furtherPass) {
    constexpr int MostPasses = 2;
    int passes = 0;
    for (; InDesktopOrder(windows) != windows && passes < MostPasses; ++passes) {
        furtherPass();
    }
    if (passes > 0) {
        std::printf("measured: order on the desktop: %d further passes\n", passes);
    }
    return InDesktopOrder(windows) == windows;
}

std::vector<HWND> VisibleWindowsOfClass(const std::wstring& className, DWORD process) {
    std::vector<HWND> windows = TopLevelWindows();
    std::erase_if(windows, [&className, process](HWND window) {
        return IsWindowVisible(window) == FALSE || WindowClass(window) != className ||
               (process != 0 && ProcessOf(window) != process);
    });
    return windows;
}

HWND HighestWindowOfClass(const std::wstring& className, DWORD process) {
    const std::vector<HWND> windows = VisibleWindowsOfClass(className, process);
    return windows.empty() ? nullptr : windows.front();
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

std::wstring SeenTitle(const std::wstring& title) {
    constexpr std::size_t SeenUnits = 511;
    return title.substr(0, SeenUnits);
}

std::vector<std::wstring> RowTitles() {
    std::vector<std::wstring> titles;
    for (const HWND window : TopLevelWindows()) {
        std::wstring title = SeenTitle(WindowTitle(window));
        if (IsWindowVisible(window) != FALSE && GetWindow(window, GW_OWNER) == nullptr &&
            !title.empty()) {
            titles.push_back(std::move(title));
        }
    }
    std::sort(titles.begin(), titles.end());
    return titles;
}

DWORD ProcessOf(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process;
}

}  // namespace morvane::test
