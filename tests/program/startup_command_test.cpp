// The command "Start with Windows".

#include "program/scene.h"

namespace morvane::test {
namespace {

using StartupCommandTest = ProgramTest;

constexpr const wchar_t* Enabled = L"Morvane will start when you sign in to Windows.";
constexpr const wchar_t* Disabled = L"Morvane will no longer start with Windows.";
constexpr const wchar_t* Failed = L"Could not change the Windows startup setting.";

void ExpectBalloon(const TrayCall& balloon, const wchar_t* text, DWORD kind) {
    EXPECT_EQ(balloon.info, text);
    EXPECT_EQ(balloon.infoTitle, L"Morvane");
    EXPECT_EQ(balloon.infoFlags, kind);
}

TEST_F(StartupCommandTest, ShortcutAppearsAndDisappears) {
    const TrayRecorder recorder;
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(StartWithWindowsCommand));
    const Shortcut shortcut = ReadShortcut(StartupShortcut()).value_or(Shortcut{});
    EXPECT_EQ(shortcut.description, L"Keep selected windows always on top");
    ExpectBalloon(WaitForBalloon(recorder), Enabled, NIIF_INFO);
    ASSERT_TRUE(program.SendCommand(StartWithWindowsCommand));
    EXPECT_FALSE(PathExists(StartupShortcut()));
    ExpectBalloon(WaitForBalloon(recorder, 1), Disabled, NIIF_INFO);
}

// The file's type and target do not matter.
TEST_F(StartupCommandTest, AnyFileOfTheNameCountsAsEnabled) {
    const TrayRecorder recorder;
    ASSERT_TRUE(WriteFileBytes(StartupShortcut(), "anything"));
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(StartWithWindowsCommand));
    EXPECT_FALSE(PathExists(StartupShortcut()));
    ExpectBalloon(WaitForBalloon(recorder), Disabled, NIIF_INFO);
}

TEST_F(StartupCommandTest, RemovalThatFailsIsAnnouncedAllTheSame) {
    const TrayRecorder recorder;
    ASSERT_EQ(RunProgram(L"--install-startup"), 0U);
    const Program program = StartedProgram();
    ASSERT_NE(SetFileAttributesW(StartupShortcut().c_str(), FILE_ATTRIBUTE_READONLY), FALSE);
    ASSERT_TRUE(program.SendCommand(StartWithWindowsCommand));
    EXPECT_TRUE(PathExists(StartupShortcut())) << "read-only";
    ExpectBalloon(WaitForBalloon(recorder), Disabled, NIIF_INFO);
    ASSERT_NE(SetFileAttributesW(StartupShortcut().c_str(), FILE_ATTRIBUTE_NORMAL), FALSE);
    {
        const FileHandle lock(CreateFileW(StartupShortcut().c_str(), GENERIC_READ, 0, nullptr,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(lock);
        ASSERT_TRUE(program.SendCommand(StartWithWindowsCommand));
        EXPECT_TRUE(PathExists(StartupShortcut())) << "locked";
        ExpectBalloon(WaitForBalloon(recorder, 1), Disabled, NIIF_INFO);
    }
    ASSERT_TRUE(program.SendCommand(StartWithWindowsCommand));
    EXPECT_FALSE(PathExists(StartupShortcut()));
}

TEST_F(StartupCommandTest, FolderOfTheNameCountsAsEnabledAndStays) {
    const TrayRecorder recorder;
    ASSERT_NE(CreateDirectoryW(StartupShortcut().c_str(), nullptr), FALSE);
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(StartWithWindowsCommand));
    EXPECT_TRUE(PathExists(StartupShortcut()));
    ExpectBalloon(WaitForBalloon(recorder), Disabled, NIIF_INFO);
}

TEST_F(StartupCommandTest, FailureToInstallIsAWarning) {
    const TrayRecorder recorder;
    const Program program = StartedProgram();
    const ShellFolderOverride away(L"Startup", L"Q:\\nowhere");
    ASSERT_TRUE(program.SendCommand(StartWithWindowsCommand));
    ExpectBalloon(WaitForBalloon(recorder), Failed, NIIF_WARNING);
}

TEST_F(StartupCommandTest, SettingsFileDoesNotRecordIt) {
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(StartWithWindowsCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {}));
}

}  // namespace
}  // namespace morvane::test
