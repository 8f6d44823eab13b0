// A program that gives tests windows of another process. It is controlled through its standard
// input (see support/actor_protocol.h) and ends when that closes, so that no test leaves one
// behind.

#include <array>
#include <memory>
#include <string>
#include <thread>

#include "actor/commands.h"
#include "base/win.h"

namespace {

constexpr UINT WmCommand = WM_APP + 1;  // its line is an std::string to delete
constexpr const wchar_t* CommandWindowClass = L"MorvaneTestActorCommands";

void WriteLine(const std::string& line) {
    // One write per line, so that the client never waits for the rest of a line.
    const std::string bytes = line + "\n";
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), bytes.data(), static_cast<DWORD>(bytes.size()),
              &written, nullptr);
}

void RunCommand(const std::string& line) {
    const morvane::test::WindowCommandResult result = morvane::test::ExecuteWindowCommand(line);
    WriteLine(result.answer);
    if (result.hangMilliseconds > 0) {
        Sleep(result.hangMilliseconds);
    }
    if (result.quit) {
        PostQuitMessage(0);
    }
}

// Commands are posted to a window, not to the thread, so that they are also handled in the modal
// loops of moving, sizing and menus.
LRESULT CALLBACK CommandProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WmCommand) {
        const std::unique_ptr<std::string> line(reinterpret_cast<std::string*>(lParam));
        RunCommand(*line);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void HandleLine(HWND commandWindow, const std::string& line) {
    if (const auto answer = morvane::test::AnswerRecordCommand(line)) {
        WriteLine(*answer);
        return;
    }
    auto command = std::make_unique<std::string>(line);
    if (PostMessageW(commandWindow, WmCommand, 0, reinterpret_cast<LPARAM>(command.get())) !=
        FALSE) {
        // The window deletes it.
        [[maybe_unused]] const std::string* const taken = command.release();
    }
}

void ReadCommands(HWND commandWindow) {
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    std::string pending;
    std::array<char, 4096> buffer{};
    DWORD count = 0;
    while (ReadFile(input, buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) !=
               FALSE &&
           count > 0) {
        pending.append(buffer.data(), count);
        std::size_t end = 0;
        while ((end = pending.find('\n')) != std::string::npos) {
            HandleLine(commandWindow, pending.substr(0, end));
            pending.erase(0, end + 1);
        }
    }
    // The client is gone. The main thread cannot be asked to end: it may be hanging.
    ExitProcess(0);
}

}  // namespace

// Called by the C runtime's start-up; no header declares it.
int wmain();

int wmain() {
    const HINSTANCE self = GetModuleHandleW(nullptr);
    WNDCLASSW commandClass{};
    commandClass.lpfnWndProc = CommandProc;
    commandClass.hInstance = self;
    commandClass.lpszClassName = CommandWindowClass;
    if (RegisterClassW(&commandClass) == 0) {
        return 1;
    }
    const HWND commandWindow = CreateWindowExW(0, CommandWindowClass, L"", 0, 0, 0, 0, 0,
                                               HWND_MESSAGE, nullptr, self, nullptr);
    if (commandWindow == nullptr) {
        return 2;
    }
    std::thread(ReadCommands, commandWindow).detach();

    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    // The reader still waits for input; leaving through the C runtime would destroy the state it
    // uses.
    ExitProcess(0);
}
