// Lists, checks and arranges the windows of other programs for a shell script: visible, unowned,
// titled top-level windows.
//
//   window_report list                               prints the windows from top to bottom
//   window_report wait SECONDS EXPECTATION...        waits until all hold at once
//   window_report place TITLE X Y WIDTH HEIGHT       moves a window (pixels)
//   window_report activate TITLE                     brings a window to the front, as a click does
//   window_report close-hidden CLASS                 asks a message-only window to close
//   window_report command-hidden CLASS NUMBER        sends it a command, as its menu would
//
// An expectation is false if a window in it does not exist:
//
//   topmost:TITLE      the window is always on top
//   ordinary:TITLE     the window is not
//   active:TITLE       the window is the foreground window
//   above:TITLE:TITLE  the first window lies above the second
//
// TITLE is part of a window's title, case-sensitive; the highest such window is meant. The exit
// status is 0 on success, 1 on failure or timeout, 2 for wrong arguments.

#include <algorithm>
#include <array>
#include <cstdio>
#include <cwchar>
#include <string>
#include <string_view>
#include <vector>

#include "base/win.h"

#include <fcntl.h>
#include <io.h>

namespace morvane::report {

namespace {

using Arguments = std::vector<std::wstring>;

constexpr DWORD PollPeriod = 50;  // milliseconds

enum ExitStatus : int { Done = 0, NotDone = 1, WrongArguments = 2 };

struct ShownWindow {
    HWND window = nullptr;
    std::wstring title;
    bool topmost = false;
    bool active = false;  // the foreground window
};

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

// From the top of the Z-order down.
std::vector<ShownWindow> ShownWindows() {
    std::vector<ShownWindow> windows;
    EnumWindows(AddShown, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

// Null if there is none.
const ShownWindow* FindShown(const std::vector<ShownWindow>& windows, std::wstring_view text) {
    const auto found = std::ranges::find_if(windows, [text](const ShownWindow& candidate) {
        return candidate.title.find(text) != std::wstring::npos;
    });
    return found != windows.end() ? &*found : nullptr;
}

enum class Answer { Holds, DoesNot, NotAnExpectation };

// The parts of the text between its colons; the last of them may hold further ones.
std::array<std::wstring_view, 3> Parts(std::wstring_view text) {
    std::array<std::wstring_view, 3> parts;
    for (std::wstring_view& part : parts) {
        const bool last = &part == &parts.back();
        const std::size_t end = last ? text.size() : std::min(text.find(L':'), text.size());
        part = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

Answer Judge(std::wstring_view expectation, const std::vector<ShownWindow>& windows) {
    const auto [claim, title, lowerTitle] = Parts(expectation);
    const bool isAbove = claim == L"above";
    const bool isKnown =
        isAbove || claim == L"topmost" || claim == L"ordinary" || claim == L"active";
    // Every window title contains the empty text.
    if (!isKnown || title.empty() || lowerTitle.empty() == isAbove) {
        return Answer::NotAnExpectation;
    }
    const ShownWindow* const found = FindShown(windows, title);
    const ShownWindow* const lower = isAbove ? FindShown(windows, lowerTitle) : found;
    if (found == nullptr || lower == nullptr) {
        return Answer::DoesNot;
    }
    const bool holds = (claim == L"topmost" && found->topmost) ||
                       (claim == L"ordinary" && !found->topmost) ||
                       (claim == L"active" && found->active) || (isAbove && found < lower);
    return holds ? Answer::Holds : Answer::DoesNot;
}

std::string Utf8(std::wstring_view text) {
    const int units = static_cast<int>(text.size());
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(std::max(size, 0)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), units, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

void PrintWindows(const std::vector<ShownWindow>& windows) {
    for (const ShownWindow& shown : windows) {
        std::printf("    %-10s %s%s\n", shown.topmost ? "ON TOP" : "ordinary",
                    Utf8(shown.title).c_str(), shown.active ? "   (active)" : "");
    }
}

int List() {
    PrintWindows(ShownWindows());
    return Done;
}

int Wait(const Arguments& arguments) {
    const ULONGLONG timeout = std::wcstoul(arguments[0].c_str(), nullptr, 10) * 1000ULL;
    const ULONGLONG start = GetTickCount64();
    for (;;) {
        const std::vector<ShownWindow> windows = ShownWindows();
        const bool isLate = GetTickCount64() - start >= timeout;
        bool allHold = true;
        for (auto text = arguments.begin() + 1; text != arguments.end(); ++text) {
            const Answer answer = Judge(*text, windows);
            allHold = allHold && answer == Answer::Holds;
            if (answer == Answer::NotAnExpectation) {
                std::printf("window_report: not an expectation: %s\n", Utf8(*text).c_str());
                return WrongArguments;
            }
            if (isLate && answer == Answer::DoesNot) {
                std::printf("window_report: does not hold: %s\n", Utf8(*text).c_str());
            }
        }
        if (allHold) {
            return Done;
        }
        if (isLate) {
            PrintWindows(windows);
            return NotDone;
        }
        Sleep(PollPeriod);
    }
}

// The window named by an argument, or null after printing a message.
HWND NamedWindow(const std::wstring& title) {
    const std::vector<ShownWindow> windows = ShownWindows();
    const ShownWindow* const shown = FindShown(windows, title);
    if (shown == nullptr) {
        std::printf("window_report: no window: %s\n", Utf8(title).c_str());
        return nullptr;
    }
    return shown->window;
}

int Place(const Arguments& arguments) {
    const auto pixels = [&](std::size_t index) {
        return static_cast<int>(std::wcstol(arguments[index].c_str(), nullptr, 10));
    };
    HWND window = NamedWindow(arguments[0]);
    return window != nullptr && SetWindowPos(window, nullptr, pixels(1), pixels(2), pixels(3),
                                             pixels(4), SWP_NOZORDER | SWP_NOACTIVATE) != FALSE
               ? Done
               : NotDone;
}

int Activate(const Arguments& arguments) {
    HWND window = NamedWindow(arguments[0]);
    return window != nullptr && SetForegroundWindow(window) != FALSE ? Done : NotDone;
}

int PostToHidden(const std::wstring& className, UINT message, WPARAM wParam) {
    HWND window = FindWindowExW(HWND_MESSAGE, nullptr, className.c_str(), nullptr);
    return window != nullptr && PostMessageW(window, message, wParam, 0) != FALSE ? Done : NotDone;
}

int Run(std::wstring_view verb, const Arguments& arguments) {
    const std::size_t count = arguments.size();
    if (verb == L"list" && count == 0) {
        return List();
    }
    if (verb == L"wait" && count >= 2) {
        return Wait(arguments);
    }
    if (verb == L"place" && count == 5) {
        return Place(arguments);
    }
    if (verb == L"activate" && count == 1) {
        return Activate(arguments);
    }
    if (verb == L"close-hidden" && count == 1) {
        return PostToHidden(arguments[0], WM_CLOSE, 0);
    }
    if (verb == L"command-hidden" && count == 2) {
        return PostToHidden(arguments[0], WM_COMMAND,
                            std::wcstoul(arguments[1].c_str(), nullptr, 10));
    }
    std::puts("window_report: wrong arguments");
    return WrongArguments;
}

// The first word is the name of this program.
int Start(const Arguments& words) {
    // Plain LF, as the calling script expects.
    static_cast<void>(_setmode(_fileno(stdout), _O_BINARY));
    return words.size() < 2 ? WrongArguments
                            : Run(words[1], Arguments(words.begin() + 2, words.end()));
}

}  // namespace

}  // namespace morvane::report

// Called by the C runtime's start-up; no header declares it.
int wmain(int count, wchar_t** values);

int wmain(int count, wchar_t** values) {
    return morvane::report::Start({values, values + count});
}
