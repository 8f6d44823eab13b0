#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/win.h"

// The protocol between window_actor.exe and its client: one command per line on standard input,
// one answer per line on standard output, words separated by single blanks. An answer starts with
// "ok" or "error". Numbers are decimal and signed, including window handles. Texts are the
// hexadecimal digits of their UTF-16 units, four each, so that tabs, lone surrogates and U+FFFE
// survive; the empty text is "-".
//
//   create CLASS TITLE STYLE EXSTYLE X Y WIDTH HEIGHT OWNER VISIBLE COLOUR   -> ok WINDOW
//   many COUNT (the operands of create)                                       -> ok WINDOW...
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
// Except for quit and hang, the last four lines are answered even while the main thread hangs.
namespace morvane::test {

struct WindowSpec {
    // Registered on demand; system classes such as "#32770" are used as they are.
    std::wstring className = L"MorvaneTestWindow";
    std::wstring title = L"Actor window";
    DWORD style = WS_OVERLAPPEDWINDOW;  // WS_VISIBLE is ignored: see visible
    DWORD exStyle = 0;
    int x = 100;  // outer rectangle, screen pixels
    int y = 100;
    int width = 400;
    int height = 300;
    HWND owner = nullptr;                     // another window of the same actor
    bool visible = true;                      // shown without being activated
    COLORREF colour = RGB(0xE0, 0xE0, 0xE0);  // of the client area
};

// One WM_WINDOWPOSCHANGING as it arrived, before the window changed anything in it.
struct PositionRequest {
    HWND insertAfter = nullptr;  // HWND_TOPMOST and HWND_NOTOPMOST are kept as they are
    int x = 0;
    int y = 0;
    int cx = 0;
    int cy = 0;
    UINT flags = 0;           // SWP_...
    ULONGLONG tickCount = 0;  // GetTickCount64 on arrival, milliseconds
    LONGLONG counter = 0;     // QueryPerformanceCounter on arrival: shared by all processes, and
                              // fine enough to tell the requests of a pass apart
};

[[nodiscard]] bool IsTopmostRequest(const PositionRequest& request);

// The performance counter's reading now.
[[nodiscard]] LONGLONG CounterNow();

// One button or key message that reached the window. For the mouse, x and y are client pixels; for
// a key, x is the virtual key.
struct InputEvent {
    UINT message = 0;
    int x = 0;
    int y = 0;
};

[[nodiscard]] std::string HexFromText(std::wstring_view text);

// Empty unless the digits are whole UTF-16 units.
[[nodiscard]] std::optional<std::wstring> TextFromHex(std::string_view digits);

[[nodiscard]] std::string JoinNumbers(std::initializer_list<long long> numbers, char separator);

// Splits at each separator; empty parts are dropped.
[[nodiscard]] std::vector<std::string_view> SplitWords(std::string_view line, char separator);

// Empty unless the whole word is one decimal number.
[[nodiscard]] std::optional<long long> NumberFromWord(std::string_view word);

[[nodiscard]] HWND WindowFromNumber(long long number);
[[nodiscard]] long long NumberFromWindow(HWND window);

}  // namespace morvane::test
