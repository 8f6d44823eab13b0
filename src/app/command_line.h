#pragma once

#include <string_view>

namespace morvane {

// What a start is asked to do. Every switch acts once and ends the process.
enum class StartMode {
    Run,
    InstallStartup,
    RemoveStartup,
    RemoveData,
};

// The first switch, in the order above, whose text occurs anywhere in the command line without
// regard to ASCII case; Run when none does.
[[nodiscard]] StartMode ParseCommandLine(std::wstring_view commandLine);

}  // namespace morvane
