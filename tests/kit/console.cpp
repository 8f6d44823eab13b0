#include "kit/console.h"

#include <cstdio>

namespace morvane::kit {
namespace {

bool IsConsole(DWORD stream) {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stream), &mode) != FALSE;
}

}  // namespace

void InputModeTraits::Close(Handle mode) noexcept {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    FlushConsoleInputBuffer(input);
    SetConsoleMode(input, mode | ENABLE_EXTENDED_FLAGS);
}

// The width is one column less than most consoles have.
void Say(const std::string& line) {
    std::printf(IsConsole(STD_OUTPUT_HANDLE) ? "\r%-79s\n" : "%s\n", line.c_str());
    static_cast<void>(std::fflush(stdout));
}

void SayForNow(const std::string& line) {
    if (IsConsole(STD_OUTPUT_HANDLE)) {
        std::printf("\r%-79.79s", line.c_str());
        static_cast<void>(std::fflush(stdout));
    }
}

InputMode IgnoreInput() {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    DWORD mode = 0;
    if (GetConsoleMode(input, &mode) != FALSE) {
        SetConsoleMode(input, (mode & ~DWORD{ENABLE_QUICK_EDIT_MODE}) | ENABLE_EXTENDED_FLAGS);
    }
    return InputMode(mode);
}

void WaitForEnter() {
    if (IsConsole(STD_INPUT_HANDLE) && IsConsole(STD_OUTPUT_HANDLE)) {
        FlushConsoleInputBuffer(GetStdHandle(STD_INPUT_HANDLE));
        Say("Press Enter.");
        static_cast<void>(std::getchar());
    }
}

}  // namespace morvane::kit
