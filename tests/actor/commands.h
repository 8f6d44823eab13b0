#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace morvane::test {

// The answer to a command that only reads or clears records, from any thread; nothing for every
// other command.
[[nodiscard]] std::optional<std::string> AnswerRecordCommand(std::string_view line);

struct WindowCommandResult {
    std::string answer;
    unsigned long hangMilliseconds = 0;  // to be slept through once the answer is on its way
    bool quit = false;
};

// Carries a command out on the thread that owns the windows.
[[nodiscard]] WindowCommandResult ExecuteWindowCommand(std::string_view line);

}  // namespace morvane::test
