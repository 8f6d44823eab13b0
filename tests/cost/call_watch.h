#pragma once

#include <functional>
#include <map>
#include <string>

namespace morvane::test {

// How often a function was called, by name; a function without a call has no entry.
using CallCounts = std::map<std::string, int>;

// What stands for every function of user32, shell32 and advapi32, and every one of kernel32 for
// files and folders, that has no name of its own in the counts. A call of one does nothing and
// gives 0: nothing here is expected to make any.
inline constexpr const char* OtherCalls = "another call to the platform";

// Runs the work and counts the platform calls that it makes for windows, files, the shell and the
// registry. Calls of the tests' own code count as well.
[[nodiscard]] CallCounts CountCalls(const std::function<void()>& work);

// The calls of counts that are not in base. Throws std::logic_error when base has more of any.
[[nodiscard]] CallCounts Added(const CallCounts& counts, const CallCounts& base);

}  // namespace morvane::test
