#include "app/command_line.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "app/exit_codes.h"
#include "support/printed.h"

namespace morvane::test {

namespace {

using namespace std::string_view_literals;

constexpr std::pair<std::wstring_view, std::optional<Switch>> CommandLines[] = {
    {L"", std::nullopt},
    {L" ", std::nullopt},
    {L"install-startup", std::nullopt},
    {L"-install-startup", std::nullopt},
    {L"/install-startup", std::nullopt},
    {L"--install", std::nullopt},
    {L"--install-startu", std::nullopt},
    {L"--install startup", std::nullopt},
    {L"--install_startup", std::nullopt},
    {L"--\u0130nstall-startup", std::nullopt},
    {L"--remove", std::nullopt},
    {L"--remove-", std::nullopt},
    {L"--remove-dat", std::nullopt},
    {L"--install-startup", Switch::InstallStartup},
    {L"--INSTALL-STARTUP", Switch::InstallStartup},
    {L"--Install-StartUp", Switch::InstallStartup},
    {L"  --install-startup  ", Switch::InstallStartup},
    {L"\"--install-startup\"", Switch::InstallStartup},
    {L"---install-startup", Switch::InstallStartup},
    {L"--no--install-startupx", Switch::InstallStartup},
    {L"C:\\folder --install-startup\\file.txt", Switch::InstallStartup},
    {L"--install-startup=no", Switch::InstallStartup},
    {L"--remove-startup", Switch::RemoveStartup},
    {L"--ReMoVe-StArTuP", Switch::RemoveStartup},
    {L"x--remove-startupx", Switch::RemoveStartup},
    {L"--remove-data", Switch::RemoveData},
    {L"--REMOVE-DATA", Switch::RemoveData},
    {L"--remove-database", Switch::RemoveData},
    {L"x\0--remove-data"sv, Switch::RemoveData},
    // The order of the switches decides, not the order of the words.
    {L"--remove-data --install-startup", Switch::InstallStartup},
    {L"--install-startup --remove-data", Switch::InstallStartup},
    {L"--remove-startup --install-startup", Switch::InstallStartup},
    {L"--remove-data --remove-startup", Switch::RemoveStartup},
    {L"--remove-startup --remove-data", Switch::RemoveStartup},
    {L"--remove-data--REMOVE-STARTUP--Install-Startup", Switch::InstallStartup},
};

TEST(ParseCommandLine, FindsASwitchAnywhereWithoutRegardToCase) {
    for (const auto& [commandLine, given] : CommandLines) {
        EXPECT_EQ(ParseCommandLine(commandLine), given) << Printed(commandLine);
    }
}

TEST(ParseCommandLine, FindsASwitchInAVeryLongLine) {
    const std::wstring filler(100'000, L'-');
    EXPECT_EQ(ParseCommandLine(filler), std::nullopt);
    EXPECT_EQ(ParseCommandLine(filler + L"--remove-data" + filler), Switch::RemoveData);
}

TEST(ExitCode, HasTheDocumentedNumbers) {
    EXPECT_EQ(ExitSuccess, 0);
    EXPECT_EQ(ExitComFailed, 1);
    EXPECT_EQ(ExitSwitchFailed, 2);
    EXPECT_EQ(ExitClassFailed, 3);
    EXPECT_EQ(ExitWindowFailed, 4);
}

}  // namespace

}  // namespace morvane::test
