#include "support/actor.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <stdexcept>
#include <utility>

#include "support/child_process.h"

namespace morvane::test {
namespace {

constexpr std::chrono::milliseconds AnswerTimeout{60'000};
constexpr std::chrono::milliseconds StartTimeout{20'000};
constexpr std::chrono::milliseconds EndTimeout{2'000};

struct Pipe {
    FileHandle readEnd;
    FileHandle writeEnd;
};

// Only the child's end is inheritable; otherwise neither side would see the other close.
Pipe MakePipe(bool childReads) {
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    Pipe pipe;
    if (CreatePipe(pipe.readEnd.put(), pipe.writeEnd.put(), &inheritable, 0) == FALSE) {
        throw std::runtime_error("no pipe to the window actor");
    }
    SetHandleInformation((childReads ? pipe.writeEnd : pipe.readEnd).get(), HANDLE_FLAG_INHERIT, 0);
    return pipe;
}

std::string Command(const char* name, std::initializer_list<long long> numbers) {
    return std::string(name) + " " + JoinNumbers(numbers, ' ');
}

std::string CreationWords(const WindowSpec& spec) {
    return HexFromText(spec.className) + " " + HexFromText(spec.title) + " " +
           JoinNumbers({spec.style, spec.exStyle, spec.x, spec.y, spec.width, spec.height,
                        NumberFromWindow(spec.owner), spec.visible ? 1 : 0, spec.colour},
                       ' ');
}

// Throws if the word is not a number.
long long AnsweredNumber(std::string_view word) {
    const std::optional<long long> number = NumberFromWord(word);
    if (!number) {
        throw std::runtime_error("the window actor sent a malformed number");
    }
    return *number;
}

// The numbers of one comma-separated record of an answer; throws unless there are exactly count.
std::vector<long long> RecordNumbers(std::string_view record, std::size_t count) {
    std::vector<long long> numbers;
    for (const std::string_view word : SplitWords(record, ',')) {
        numbers.push_back(AnsweredNumber(word));
    }
    if (numbers.size() != count) {
        throw std::runtime_error("the window actor sent a malformed record");
    }
    return numbers;
}

}  // namespace

Actor::Actor() {
    // Once in thousands of starts under Wine 8.0 the process never came to life; the next attempt
    // worked.
    for (int repeat = 1; !Start(); ++repeat) {
        End();
        if (repeat > MaxRepeatsPerStart) {
            throw std::runtime_error("the window actor does not start");
        }
        CountRepeatedStart("no answer of a window actor");
    }
}

bool Actor::Start() {
    Pipe commands = MakePipe(true);
    Pipe answers = MakePipe(false);
    const std::wstring executable = RequiredPath(L"MORVANE_TEST_ACTOR");
    ChildProcess child =
        StartProcess(executable, L"", {}, {commands.readEnd.get(), answers.writeEnd.get()});
    if (!child.process) {
        return false;
    }
    process_ = std::move(child.process);
    processId_ = child.id;
    toActor_ = std::move(commands.writeEnd);
    fromActor_ = std::move(answers.readEnd);
    received_.clear();
    return Send("ping") && ReadAnswer(StartTimeout) == "ok";
}

Actor::~Actor() {
    End();
}

void Actor::End() {
    if (!process_) {
        return;
    }
    toActor_.reset();
    if (!WaitForObject(process_.get(), EndTimeout)) {
        TerminateProcess(process_.get(), 1);
        // If even termination fails, nothing more can be done.
        static_cast<void>(WaitForObject(process_.get(), EndTimeout));
    }
    process_.reset();
}

bool Actor::Send(const std::string& command) {
    const std::string line = command + "\n";
    DWORD written = 0;
    return WriteFile(toActor_.get(), line.data(), static_cast<DWORD>(line.size()), &written,
                     nullptr) != FALSE;
}

std::string Actor::Ask(const std::string& command) {
    if (!Send(command)) {
        throw std::runtime_error("the window actor is gone: " + command);
    }
    const std::string answer = ReadAnswer(AnswerTimeout);
    if (!answer.starts_with("ok")) {
        throw std::runtime_error("window actor: " + command + ": " + answer);
    }
    return answer.substr(2);
}

std::string Actor::ReadAnswer(std::chrono::milliseconds timeout) {
    bool closed = false;
    const auto lineArrived = [&] {
        DWORD waiting = 0;
        closed = PeekNamedPipe(fromActor_.get(), nullptr, 0, nullptr, &waiting, nullptr) == FALSE;
        while (waiting > 0) {
            std::array<char, 4096> buffer{};
            DWORD count = 0;
            if (ReadFile(fromActor_.get(), buffer.data(),
                         std::min(waiting, static_cast<DWORD>(buffer.size())), &count,
                         nullptr) == FALSE) {
                break;
            }
            received_.append(buffer.data(), count);
            waiting -= count;
        }
        return closed || received_.find('\n') != std::string::npos;
    };
    const bool arrived = WaitUntil(lineArrived, timeout);
    const std::size_t end = received_.find('\n');
    if (!arrived) {
        return "no answer in time";
    }
    if (end == std::string::npos) {
        return "ended without an answer";
    }
    std::string line = received_.substr(0, end);
    received_.erase(0, end + 1);
    return line;
}

HWND Actor::Create(const WindowSpec& spec) {
    const std::string answer = Ask("create " + CreationWords(spec));
    return WindowFromNumber(AnsweredNumber(SplitWords(answer, ' ').at(0)));
}

std::vector<HWND> Actor::CreateMany(int count, const WindowSpec& spec) {
    const std::string answer = Ask(Command("many", {count}) + " " + CreationWords(spec));
    std::vector<HWND> windows;
    for (const std::string_view word : SplitWords(answer, ' ')) {
        windows.push_back(WindowFromNumber(AnsweredNumber(word)));
    }
    return windows;
}

void Actor::SetTitle(HWND window, std::wstring_view title) {
    Ask(Command("title", {NumberFromWindow(window)}) + " " + HexFromText(title));
}

void Actor::Place(HWND window, int x, int y, int width, int height) {
    Ask(Command("place", {NumberFromWindow(window), x, y, width, height}));
}

void Actor::Show(HWND window, int showCommand) {
    Ask(Command("show", {NumberFromWindow(window), showCommand}));
}

void Actor::Minimise(HWND window) {
    Show(window, SW_MINIMIZE);
    if (!WaitUntil([window] { return IsIconic(window) != FALSE; })) {
        throw std::runtime_error("the window did not minimise");
    }
}

void Actor::Restore(HWND window) {
    Show(window, SW_RESTORE);
    if (!WaitUntil([window] { return IsIconic(window) == FALSE; })) {
        throw std::runtime_error("the window did not restore");
    }
}

void Actor::SetTopmost(HWND window, bool topmost) {
    Ask(Command("order", {NumberFromWindow(window),
                          NumberFromWindow(topmost ? HWND_TOPMOST : HWND_NOTOPMOST)}));
}

void Actor::Raise(HWND window) {
    Ask(Command("order", {NumberFromWindow(window), NumberFromWindow(HWND_TOP)}));
}

void Actor::Destroy(HWND window) {
    Ask(Command("destroy", {NumberFromWindow(window)}));
}

bool Actor::BringToForeground(HWND window) {
    Ask(Command("foreground", {NumberFromWindow(window)}));
    return WaitUntil([window] { return GetForegroundWindow() == window; });
}

void Actor::Hang(std::chrono::milliseconds duration) {
    Ask(Command("hang", {duration.count()}));
}

void Actor::Refuse(HWND window, bool refusing) {
    Ask(Command("refuse", {NumberFromWindow(window), refusing ? 1 : 0}));
}

void Actor::SetOwner(HWND window, HWND owner) {
    Ask(Command("owner", {NumberFromWindow(window), NumberFromWindow(owner)}));
}

void Actor::DieOnRequest(HWND window, int n) {
    Ask(Command("die", {NumberFromWindow(window), n}));
}

std::vector<PositionRequest> Actor::Requests(HWND window) {
    std::vector<PositionRequest> requests;
    const std::string answer = Ask(Command("requests", {NumberFromWindow(window)}));
    for (const std::string_view record : SplitWords(answer, ' ')) {
        const std::vector<long long> n = RecordNumbers(record, 8);
        requests.push_back({WindowFromNumber(n[0]), static_cast<int>(n[1]), static_cast<int>(n[2]),
                            static_cast<int>(n[3]), static_cast<int>(n[4]), static_cast<UINT>(n[5]),
                            static_cast<ULONGLONG>(n[6]), n[7]});
    }
    return requests;
}

std::vector<InputEvent> Actor::Input(HWND window) {
    std::vector<InputEvent> events;
    const std::string answer = Ask(Command("input", {NumberFromWindow(window)}));
    for (const std::string_view record : SplitWords(answer, ' ')) {
        const std::vector<long long> n = RecordNumbers(record, 3);
        events.push_back({static_cast<UINT>(n[0]), static_cast<int>(n[1]), static_cast<int>(n[2])});
    }
    return events;
}

void Actor::ForgetRecords(HWND window) {
    Ask(Command("forget", {NumberFromWindow(window)}));
}

std::vector<HWND> Actor::RequestedOrder(const std::vector<HWND>& windows, LONGLONG after,
                                        LONGLONG before) {
    std::vector<std::pair<LONGLONG, HWND>> asked;
    for (const HWND window : windows) {
        for (const PositionRequest& request : Requests(window)) {
            if (IsTopmostRequest(request) && request.counter > after && request.counter < before) {
                asked.emplace_back(request.counter, window);
            }
        }
    }
    std::sort(asked.begin(), asked.end(), std::greater<>());
    std::vector<HWND> order;
    order.reserve(asked.size());
    for (const auto& [counter, window] : asked) {
        order.push_back(window);
    }
    return order;
}

bool Actor::Quit(std::chrono::milliseconds timeout) {
    Ask("quit");
    return WaitForObject(process_.get(), timeout);
}

}  // namespace morvane::test
