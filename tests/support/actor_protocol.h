#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/win.h"

// What window_actor.exe and its client agree on: one command per line on standard input, one
// answer per line on standard output, words parted by single blanks. An answer starts with "ok"
// or "error". Numbers are decimal and signed, window handles too. Texts are the hexadecimal
// digits of their UTF-16 units, four each, so that tabs, lone surrogates and U+FFFE travel
// unharmed; the empty text is "-".
//
//   create CLASS TITLE STYLE EXSTYLE X Y WIDTH HEIGHT OWNER VISIBLE COLOUR   -> ok WINDOW
//   many COUNT (the words of create)                                          -> ok WINDOW...
//   title WINDOW TEXT            place WINDOW X Y WIDTH HEIGHT
//   show WINDOW COMMAND          order WINDOW INSERTAFTER
//   foreground WINDOW            destroy WINDOW
//   refuse WINDOW 0|1            die WINDOW N
//   owner WINDOW OWNER
//   hang MILLISECONDS            quit
//   requests WINDOW              -> ok AFTER,X,Y,CX,CY,FLAGS,TICK,COUNTER ...
//   input WINDOW                 -> ok MESSAGE,X,Y ...
//   forget WINDOW                ping
//
// The last four lines are answered even while the main thread hangs, quit and hang excepted.
namespace morvane::test {

// One WM_WINDOWPOSCHANGING as the window received it, before the window changed anything in it.
struct PositionRequest {
    HWND insertAfter = nullptr;  // HWND_TOPMOST and HWND_NOTOPMOST are kept as they come
    int x = 0;
    int y = 0;
    int cx = 0;
    int cy = 0;
    UINT flags = 0;           // SWP_...
    ULONGLONG tickCount = 0;  // GetTickCount64 at the arrival, milliseconds
    LONGLONG counter = 0;     // QueryPerformanceCounter then: one count for all processes, and fine
                              // enough to tell the requests of a pass apart
};

// One button or key message that reached the window; x and y are client pixels for the mouse, and
// the virtual key in x for a key.
struct InputEvent {
    UINT message = 0;
    int x = 0;
    int y = 0;
};

[[nodiscard]] std::string HexFromText(std::wstring_view text);

// Empty when the digits are not whole UTF-16 units.
[[nodiscard]] std::optional<std::wstring> TextFromHex(std::string_view digits);

// Splits at each separator; empty parts are dropped.
[[nodiscard]] std::vector<std::string_view> SplitWords(std::string_view line, char separator);

// Empty when the word is not wholly one decimal number.
[[nodiscard]] std::optional<long long> NumberFromWord(std::string_view word);

[[nodiscard]] HWND WindowFromNumber(long long number);
[[nodiscard]] long long NumberFromWindow(HWND window);

}  // namespace morvane::test
