#pragma once

#include <optional>
#include <string_view>

namespace morvane {

// Each does its work once and ends the process.
enum class Switch {
    InstallStartup,
    RemoveStartup,
    RemoveData,
};

// The first switch, in the order above, whose text occurs anywhere in the command line without
// regard to ASCII case.
[[nodiscard]] std::optional<Switch> ParseCommandLine(std::wstring_view commandLine);

}  // namespace morvane
