#include "app/command_line.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "app/exit_codes.h"
#include "unit/printed.h"

namespace morvane::test {

namespace {

using namespace std::string_view_literals;

struct CommandLineCase {
    std::wstring_view commandLine;
    StartMode mode;
};

constexpr CommandLineCase CommandLines[] = {
    {L"", StartMode::Run},
    {L" ", StartMode::Run},
    {L"install-startup", StartMode::Run},
    {L"-install-startup", StartMode::Run},
    {L"/install-startup", StartMode::Run},
    {L"--install", StartMode::Run},
    {L"--install-startu", StartMode::Run},
    {L"--install startup", StartMode::Run},
    {L"--install_startup", StartMode::Run},
    {L"--\u0130nstall-startup", StartMode::Run},
    {L"--remove", StartMode::Run},
    {L"--remove-", StartMode::Run},
    {L"--remove-dat", StartMode::Run},
    {L"--install-startup", StartMode::InstallStartup},
    {L"--INSTALL-STARTUP", StartMode::InstallStartup},
    {L"--Install-StartUp", StartMode::InstallStartup},
    {L"  --install-startup  ", StartMode::InstallStartup},
    {L"\"--install-startup\"", StartMode::InstallStartup},
    {L"---install-startup", StartMode::InstallStartup},
    {L"--no--install-startupx", StartMode::InstallStartup},
    {L"C:\\folder --install-startup\\file.txt", StartMode::InstallStartup},
    {L"--install-startup=no", StartMode::InstallStartup},
    {L"--remove-startup", StartMode::RemoveStartup},
    {L"--ReMoVe-StArTuP", StartMode::RemoveStartup},
    {L"x--remove-startupx", StartMode::RemoveStartup},
    {L"--remove-data", StartMode::RemoveData},
    {L"--REMOVE-DATA", StartMode::RemoveData},
    {L"--remove-database", StartMode::RemoveData},
    {L"x\0--remove-data"sv, StartMode::RemoveData},
    // The first in the order of the switches, not of the words.
    {L"--remove-data --install-startup", StartMode::InstallStartup},
    {L"--install-startup --remove-data", StartMode::InstallStartup},
    {L"--remove-startup --install-startup", StartMode::InstallStartup},
    {L"--remove-data --remove-startup", StartMode::RemoveStartup},
    {L"--remove-startup --remove-data", StartMode::RemoveStartup},
    {L"--remove-data--REMOVE-STARTUP--Install-Startup", StartMode::InstallStartup},
};

TEST(ParseCommandLine, FindsASwitchAnywhereWithoutRegardToCase) {
    for (const CommandLineCase& c : CommandLines) {
        SCOPED_TRACE(Printed(c.commandLine));
        EXPECT_EQ(ParseCommandLine(c.commandLine), c.mode);
    }
}

TEST(ParseCommandLine, FindsASwitchInAVeryLongLine) {
    const std::wstring filler(100'000, L'-');
    EXPECT_EQ(ParseCommandLine(filler), StartMode::Run);
    EXPECT_EQ(ParseCommandLine(filler + L"--remove-data" + filler), StartMode::RemoveData);
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
