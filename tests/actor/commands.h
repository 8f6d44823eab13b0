#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace morvane::test {

// The answer to a command that only reads or clears records, on any thread; nothing for all other
// commands.
[[nodiscard]] std::optional<std::string> AnswerRecordCommand(std::string_view line);

struct WindowCommandResult {
    std::string answer;
    unsigned long hangMilliseconds = 0;  // to sleep once the answer has been sent
    bool quit = false;
};

// Carries out a command on the thread that owns the windows.
[[nodiscard]] WindowCommandResult ExecuteWindowCommand(std::string_view line);

}  // namespace morvane::test
