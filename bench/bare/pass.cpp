#include "bare/loops.h"
#include "pin/window_query.h"

namespace morvane::bare {
namespace {

constexpr int TitleCapacity = 512;
constexpr int ClassCapacity = 256;
constexpr UINT ZOrderOnly = SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE | SWP_SHOWWINDOW;

// Not cleared: a failed call returns a length of 0.
struct Texts {
    wchar_t title[TitleCapacity];
    wchar_t className[ClassCapacity];
};

int AskTitle(HWND window, Texts& texts) {
    return GetWindowTextW(window, texts.title, TitleCapacity);
}

// The length of the title; 0 for a window that is not a candidate.
int AskAll(HWND window, Texts& texts) {
    if (IsWindowVisible(window) == FALSE || GetWindow(window, GW_OWNER) != nullptr) {
        return 0;
    }
    GetClassNameW(window, texts.className, ClassCapacity);
    return AskTitle(window, texts);
}

}  // namespace

void LookAtWindows() {
    Texts texts;
    ForEachTopLevelWindow([&](HWND window) { AskAll(window, texts); });
}

void LookAtAndPin(std::span<const HWND> pinned) {
    Texts texts;
    for (const HWND window : pinned) {
        if (IsWindow(window) != FALSE) {
            AskAll(window, texts);
        }
    }
    ForEachTopLevelWindow([&](HWND window) {
        if (AskAll(window, texts) > 0 && texts.title[0] == PinnedMark) {
            AskTitle(window, texts);
        }
    });
    for (const HWND window : pinned) {
        if (IsWindow(window) == FALSE) {
            continue;
        }
        AskTitle(window, texts);
        RECT frame;
        if (IsWindow(window) != FALSE && IsIconic(window) == FALSE) {
            GetWindowRect(window, &frame);
        }
        SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, ZOrderOnly);
    }
}

}  // namespace morvane::bare
