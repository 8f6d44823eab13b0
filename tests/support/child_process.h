#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/owners.h"
#include "base/win.h"

namespace morvane::test {

// A variable without a value is removed from the child's environment.
using Environment = std::vector<std::pair<std::wstring, std::optional<std::wstring>>>;

// The handles a child inherits as standard input and output, both or neither, and for errors, if
// not this process's own.
struct ChildPipes {
    HANDLE input = nullptr;
    HANDLE output = nullptr;
    HANDLE error = nullptr;
};

struct ChildProcess {
    KernelHandle process;
    DWORD id = 0;
    KernelHandle thread;  // its first one
};

enum class Begin { AtOnce, WhenResumed };

// Starts an executable with a command line as typed. The handle is empty on failure.
[[nodiscard]] ChildProcess StartProcess(const std::wstring& executable,
                                        const std::wstring& arguments,
                                        const Environment& changes = {},
                                        const ChildPipes& pipes = {}, Begin begin = Begin::AtOnce);

inline constexpr int MaxRepeatsPerStart = 2;

// To be called before a start is tried again, which is only right if nothing has begun. Prints it
// as a figure of the run; throws std::runtime_error if the run has had too many.
void CountRepeatedStart(const std::string& reason);

// A variable of this process, if it is set.
[[nodiscard]] std::optional<std::wstring> EnvironmentVariable(const std::wstring& name);

// The path in a variable that the test harness must set; if it is missing, throws
// std::runtime_error naming the variable.
[[nodiscard]] std::wstring RequiredPath(const std::wstring& variable);

}  // namespace morvane::test
