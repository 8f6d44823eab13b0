#pragma once

#include <chrono>
#include <string>

#include "support/wait.h"

// The tests run under Wine on a Unix host, which provides the real mouse, screenshots and
// file-system links. None of this works on Windows itself.
namespace morvane::test {

struct UnixResult {
    int exitCode = -1;   // -1: not started, or not finished in time
    std::string output;  // standard output and standard error together
};

// Runs a shell command line and waits for it to end, which adds about 10 milliseconds. The command
// sees the DISPLAY and PATH that this process was started with.
[[nodiscard]] UnixResult RunUnix(const std::string& shellLine,
                                 std::chrono::milliseconds timeout = DefaultTimeout);

// The host's path for a Windows path, in UTF-8; the last part need not exist. Empty on failure and
// outside Wine.
[[nodiscard]] std::string UnixPath(const std::wstring& windowsPath);

// The text quoted as a single shell word.
[[nodiscard]] std::string QuotedForShell(const std::string& text);

}  // namespace morvane::test
