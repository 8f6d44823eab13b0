#include "actor/commands.h"

#include <algorithm>
#include <array>
#include <vector>

#include "actor/actor_windows.h"
#include "base/win.h"
#include "support/actor_protocol.h"

namespace morvane::test {
namespace {

using Words = std::vector<std::string_view>;
using Numbers = std::vector<long long>;

constexpr std::string_view Ok = "ok";

// The numbers from the given word on; nothing unless there are exactly count.
std::optional<Numbers> NumbersFrom(const Words& words, std::size_t first, std::size_t count) {
    if (words.size() != first + count) {
        return std::nullopt;
    }
    Numbers numbers;
    for (std::size_t at = first; at < words.size(); ++at) {
        const std::optional<long long> number = NumberFromWord(words[at]);
        if (!number) {
            return std::nullopt;
        }
        numbers.push_back(*number);
    }
    return numbers;
}

std::string LastError(std::string_view what) {
    return "error " + std::string(what) + " " + std::to_string(GetLastError());
}

std::string OkIf(BOOL done, std::string_view what) {
    return done != FALSE ? std::string(Ok) : LastError(what);
}

// The operands of "create", starting at first: two texts, then nine numbers.
std::optional<WindowSpec> WindowSpecFrom(const Words& words, std::size_t first) {
    const std::optional<Numbers> numbers = NumbersFrom(words, first + 2, 9);
    if (!numbers) {
        return std::nullopt;
    }
    const std::optional<std::wstring> className = TextFromHex(words[first]);
    const std::optional<std::wstring> title = TextFromHex(words[first + 1]);
    if (!className || !title) {
        return std::nullopt;
    }
    const Numbers& n = *numbers;
    return WindowSpec{.className = *className,
                      .title = *title,
                      .style = static_cast<DWORD>(n[0]),
                      .exStyle = static_cast<DWORD>(n[1]),
                      .x = static_cast<int>(n[2]),
                      .y = static_cast<int>(n[3]),
                      .width = static_cast<int>(n[4]),
                      .height = static_cast<int>(n[5]),
                      .owner = WindowFromNumber(n[6]),
                      .visible = n[7] != 0,
                      .colour = static_cast<COLORREF>(n[8])};
}

std::string CreateWindows(WindowSpec wanted, long long count, bool numbered) {
    std::string answer(Ok);
    const std::wstring prefix = wanted.title;
    for (long long index = 0; index < count; ++index) {
        if (numbered) {
            wanted.title = prefix + std::to_wstring(index);
        }
        const HWND window = CreateRecordedWindow(wanted);
        if (window == nullptr) {
            return LastError("create");
        }
        answer += " " + std::to_string(NumberFromWindow(window));
    }
    return answer;
}

// All commands on one existing window share this signature; n holds the numbers after the window.
std::string Place(HWND window, const Numbers& n) {
    return OkIf(
        SetWindowPos(window, nullptr, static_cast<int>(n[0]), static_cast<int>(n[1]),
                     static_cast<int>(n[2]), static_cast<int>(n[3]), SWP_NOZORDER | SWP_NOACTIVATE),
        "place");
}

std::string Show(HWND window, const Numbers& n) {
    ShowWindow(window, static_cast<int>(n[0]));
    return std::string(Ok);
}

std::string Order(HWND window, const Numbers& n) {
    return OkIf(SetWindowPos(window, WindowFromNumber(n[0]), 0, 0, 0, 0,
                             SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE),
                "order");
}

std::string Foreground(HWND window, const Numbers& /*none*/) {
    return OkIf(SetForegroundWindow(window), "foreground");
}

std::string Destroy(HWND window, const Numbers& /*none*/) {
    return OkIf(DestroyWindow(window), "destroy");
}

std::string Refuse(HWND window, const Numbers& n) {
    SetRefusing(window, n[0] != 0);
    return std::string(Ok);
}

std::string Die(HWND window, const Numbers& n) {
    SetDeathRequest(window, n[0]);
    return std::string(Ok);
}

std::string SetOwner(HWND window, const Numbers& n) {
    // A null return is ambiguous: the window may have had no owner before.
    SetLastError(ERROR_SUCCESS);
    const LONG_PTR previous = SetWindowLongPtrW(window, GWLP_HWNDPARENT, n[0]);
    return OkIf(previous != 0 || GetLastError() == ERROR_SUCCESS ? TRUE : FALSE, "owner");
}

struct WindowCommand {
    std::string_view name;
    std::size_t numbers;  // besides the window
    std::string (*run)(HWND, const Numbers&);
};

constexpr std::array<WindowCommand, 8> WindowCommands = {{{"place", 4, Place},
                                                          {"show", 1, Show},
                                                          {"order", 1, Order},
                                                          {"foreground", 0, Foreground},
                                                          {"destroy", 0, Destroy},
                                                          {"refuse", 1, Refuse},
                                                          {"die", 1, Die},
                                                          {"owner", 1, SetOwner}}};

std::string RunWindowCommand(const WindowCommand& command, const Words& words) {
    const std::optional<Numbers> numbers = NumbersFrom(words, 1, command.numbers + 1);
    if (!numbers) {
        return "error wrong operands";
    }
    const HWND window = WindowFromNumber(numbers->front());
    if (IsWindow(window) == FALSE) {
        return "error no such window";
    }
    return command.run(window, Numbers(numbers->begin() + 1, numbers->end()));
}

std::string RunWindowCommand(const Words& words) {
    for (const WindowCommand& command : WindowCommands) {
        if (command.name == words[0]) {
            return RunWindowCommand(command, words);
        }
    }
    return "error unknown command";
}

std::string SetTitle(const Words& words) {
    const std::optional<long long> window = NumberFromWord(words[1]);
    const std::optional<std::wstring> text = TextFromHex(words[2]);
    if (!window || !text) {
        return "error wrong operands";
    }
    return OkIf(SetWindowTextW(WindowFromNumber(*window), text->c_str()), "title");
}

std::string DescribeRequests(HWND window) {
    std::string answer(Ok);
    for (const PositionRequest& request : RecordedRequests(window)) {
        answer += " " + JoinNumbers({NumberFromWindow(request.insertAfter), request.x, request.y,
                                     request.cx, request.cy, request.flags,
                                     static_cast<long long>(request.tickCount), request.counter},
                                    ',');
    }
    return answer;
}

std::string DescribeInput(HWND window) {
    std::string answer(Ok);
    for (const InputEvent& event : RecordedInput(window)) {
        answer += " " + JoinNumbers({event.message, event.x, event.y}, ',');
    }
    return answer;
}

}  // namespace

std::optional<std::string> AnswerRecordCommand(std::string_view line) {
    const Words words = SplitWords(line, ' ');
    if (words.size() == 1 && words[0] == "ping") {
        return std::string(Ok);
    }
    const std::optional<Numbers> window = NumbersFrom(words, 1, 1);
    if (!window) {
        return std::nullopt;
    }
    const HWND target = WindowFromNumber(window->front());
    if (words[0] == "requests") {
        return DescribeRequests(target);
    }
    if (words[0] == "input") {
        return DescribeInput(target);
    }
    if (words[0] == "forget") {
        ForgetRecords(target);
        return std::string(Ok);
    }
    return std::nullopt;
}

WindowCommandResult ExecuteWindowCommand(std::string_view line) {
    const Words words = SplitWords(line, ' ');
    if (words.empty()) {
        return {"error empty line", 0, false};
    }
    if (words[0] == "quit") {
        return {std::string(Ok), 0, true};
    }
    if (words[0] == "hang" && words.size() == 2) {
        const long long duration = NumberFromWord(words[1]).value_or(0);
        return {std::string(Ok), static_cast<unsigned long>(std::max(duration, 0LL)), false};
    }
    if (words[0] == "title" && words.size() == 3) {
        return {SetTitle(words), 0, false};
    }
    const bool many = words[0] == "many";
    if (many || words[0] == "create") {
        const std::optional<WindowSpec> wanted = WindowSpecFrom(words, many ? 2 : 1);
        const long long count = many && wanted ? NumberFromWord(words[1]).value_or(0) : 1;
        return {wanted ? CreateWindows(*wanted, count, many) : "error wrong operands", 0, false};
    }
    return {RunWindowCommand(words), 0, false};
}

}  // namespace morvane::test
