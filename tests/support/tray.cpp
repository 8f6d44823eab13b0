#include "support/tray.h"

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/owners.h"
#include "base/win_shell.h"
#include "support/screen.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

constexpr UINT IconId = 1;
constexpr WORD ProgramIcon = 101;
constexpr int Sizes[] = {16, 20, 24, 32};  // in the taskbar, in pixels
constexpr int Tolerance = 24;              // of 255, of each colour, on the average

struct IconPixel {
    int x;
    int y;
    COLORREF colour;
};

struct Match {
    RECT rect{};
    int difference = Tolerance;
};

std::wstring FileOf(HWND window) {
    constexpr DWORD Longest = 32'768;
    const KernelHandle process(
        OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, ProcessOf(window)));
    std::wstring path(Longest, L'\0');
    DWORD length = Longest;
    if (QueryFullProcessImageNameW(process.get(), 0, path.data(), &length) == FALSE) {
        length = 0;
    }
    path.resize(length);
    return path;
}

// The pixels that do not let the background through.
std::vector<IconPixel> OpaquePixels(HICON icon, int size) {
    const Picture onBlack = DrawIcon(icon, size, RGB(0, 0, 0));
    const Picture onWhite = DrawIcon(icon, size, RGB(255, 255, 255));
    std::vector<IconPixel> pixels;
    for (int y = 0; y < onBlack.height; ++y) {
        for (int x = 0; x < onBlack.width; ++x) {
            if (onBlack.At(x, y) == onWhite.At(x, y)) {
                pixels.push_back({x, y, onBlack.At(x, y)});
            }
        }
    }
    return pixels;
}

int Difference(COLORREF one, COLORREF other) {
    return std::abs(GetRValue(one) - GetRValue(other)) +
           std::abs(GetGValue(one) - GetGValue(other)) +
           std::abs(GetBValue(one) - GetBValue(other));
}

// The average difference between the icon and a place of the screen; at least the limit if it
// cannot be below it.
int DifferenceAt(const Picture& screen, int left, int top, const std::vector<IconPixel>& icon,
                 int limit) {
    constexpr int Colours = 3;
    const int pixels = static_cast<int>(icon.size()) * Colours;
    int sum = 0;
    for (const IconPixel& pixel : icon) {
        sum += Difference(screen.At(left + pixel.x, top + pixel.y), pixel.colour);
        if (sum >= limit * pixels) {
            return limit;
        }
    }
    return sum / pixels;
}

void Improve(Match& best, const Picture& screen, HICON icon, int size) {
    const std::vector<IconPixel> pixels = OpaquePixels(icon, size);
    for (int top = 0; !pixels.empty() && top + size <= screen.height; ++top) {
        for (int left = 0; left + size <= screen.width; ++left) {
            const int difference = DifferenceAt(screen, left, top, pixels, best.difference);
            if (difference < best.difference) {
                best = {{left, top, left + size, top + size}, difference};
            }
        }
    }
}

std::optional<RECT> FindOnScreen(HWND owner) {
    const Module file(LoadLibraryExW(FileOf(owner).c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    HICON icon = file ? LoadIconW(file.get(), MAKEINTRESOURCEW(ProgramIcon)) : nullptr;
    if (icon == nullptr) {
        icon = LoadIconW(nullptr, IDI_APPLICATION);
    }
    const RECT whole{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    const Picture screen = CaptureScreen(whole);
    Match best;
    for (const int size : Sizes) {
        Improve(best, screen, icon, size);
    }
    return best.difference < Tolerance ? std::optional(best.rect) : std::nullopt;
}

bool TellTaskbar(DWORD message, HWND owner) {
    NOTIFYICONDATAW nothingNew{};
    nothingNew.cbSize = sizeof(nothingNew);
    nothingNew.hWnd = owner;
    nothingNew.uID = IconId;
    return Shell_NotifyIconW(message, &nothingNew) != FALSE;
}

}  // namespace

bool WaitForTaskbar(std::chrono::milliseconds timeout) {
    // Makes Wine 8.0 start the shell, which searching for windows does not.
    GetDesktopWindow();
    return WaitUntil([] { return FindWindowW(L"Shell_TrayWnd", nullptr) != nullptr; }, timeout);
}

bool TrayIconPresent(HWND owner) {
    return TellTaskbar(NIM_MODIFY, owner);
}

void RemoveTrayIconOf(HWND owner) {
    TellTaskbar(NIM_DELETE, owner);
}

std::optional<RECT> TrayIconRect(HWND owner) {
    NOTIFYICONIDENTIFIER icon{};
    icon.cbSize = sizeof(icon);
    icon.hWnd = owner;
    icon.uID = IconId;
    RECT rect{};
    const HRESULT told = Shell_NotifyIconGetRect(&icon, &rect);
    if (told != E_NOTIMPL) {
        return SUCCEEDED(told) ? std::optional(rect) : std::nullopt;
    }
    return TrayIconPresent(owner) ? FindOnScreen(owner) : std::nullopt;
}

POINT WaitForTrayIcon(HWND owner) {
    std::optional<RECT> rect;
    static_cast<void>(WaitUntil([&] { return (rect = TrayIconRect(owner)).has_value(); }));
    if (!rect) {
        throw std::runtime_error("the icon is not shown");
    }
    return {(rect->left + rect->right) / 2, (rect->top + rect->bottom) / 2};
}

}  // namespace morvane::test
