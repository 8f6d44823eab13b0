#pragma once

#include <functional>
#include <map>
#include <string>

namespace morvane::test {

// The number of calls by function name; functions that were not called have no entry.
using CallCounts = std::map<std::string, int>;

// Counts the calls of all other functions of user32, shell32 and advapi32, and of kernel32's file
// functions. They are not expected, so the replacement does nothing and returns 0.
inline constexpr const char* OtherCalls = "another call to the platform";

// Runs the work and counts its platform calls for windows, files, the shell and the registry,
// including calls made by test code.
[[nodiscard]] CallCounts CountCalls(const std::function<void()>& work);

// The calls that counts has beyond base. Throws std::logic_error if base has more of any.
[[nodiscard]] CallCounts Added(const CallCounts& counts, const CallCounts& base);

}  // namespace morvane::test
