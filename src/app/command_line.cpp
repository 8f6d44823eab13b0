#include "app/command_line.h"

#include <array>

#include "pin/identity.h"

namespace morvane {

namespace {

struct Switch {
    std::wstring_view text;
    StartMode mode;
};

constexpr std::array Switches = {
    Switch{L"--install-startup", StartMode::InstallStartup},
    Switch{L"--remove-startup", StartMode::RemoveStartup},
    Switch{L"--remove-data", StartMode::RemoveData},
};

}  // namespace

StartMode ParseCommandLine(std::wstring_view commandLine) {
    // A plain substring test, as for titles: no tokens, no quoting, and text glued to a switch
    // does not hide it. The loose rule is kept as it is.
    for (const Switch& known : Switches) {
        if (PatternMatches(commandLine, known.text)) {
            return known.mode;
        }
    }
    return StartMode::Run;
}

}  // namespace morvane
