#include "app/command_line.h"

#include <algorithm>
#include <array>

#include "pin/identity.h"

namespace morvane {
namespace {

struct SwitchText {
    std::wstring_view text;
    Switch value;
};

constexpr std::array SwitchTexts = {
    SwitchText{L"--install-startup", Switch::InstallStartup},
    SwitchText{L"--remove-startup", Switch::RemoveStartup},
    SwitchText{L"--remove-data", Switch::RemoveData},
};

}  // namespace

std::optional<Switch> ParseCommandLine(std::wstring_view commandLine) {
    // A plain substring test, as for titles, without tokens or quoting: a shortcut or script may
    // pass the switch with anything around it.
    const auto* const found = std::ranges::find_if(SwitchTexts, [&](const SwitchText& known) {
        return PatternMatches(commandLine, known.text);
    });
    return found != SwitchTexts.end() ? std::optional(found->value) : std::nullopt;
}

}  // namespace morvane
