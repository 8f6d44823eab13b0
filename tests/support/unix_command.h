#pragma once

#include <chrono>
#include <string>

#include "support/wait.h"

// The test bench is Wine on a Unix host: the real mouse, the screenshots and links in the file
// system are the host's. None of this works on Windows itself.
namespace morvane::test {

struct UnixResult {
    int exitCode = -1;   // -1: not started, or not finished in time
    std::string output;  // standard output and standard error together
};

// Runs a line of Unix shell and waits for its end, in about 10 milliseconds plus its own time.
// The line sees DISPLAY and PATH as this process was started with.
[[nodiscard]] UnixResult RunUnix(const std::string& shellLine,
                                 std::chrono::milliseconds timeout = DefaultTimeout);

// The host's name of a Windows path, in UTF-8; the last part need not exist. Empty on failure and
// outside Wine.
[[nodiscard]] std::string UnixPath(const std::wstring& windowsPath);

// The text as one word of Unix shell, whatever it holds.
[[nodiscard]] std::string QuotedForShell(const std::string& text);

}  // namespace morvane::test
