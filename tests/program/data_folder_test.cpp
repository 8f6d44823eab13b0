// The program's data folder: missing, elsewhere, a link, removed.

#include "program/scene.h"
#include "support/notepad.h"

namespace morvane::test {
namespace {

using DataFolderTest = ProgramTest;

TEST_F(DataFolderTest, RemovalLeavesARunningInstanceAlive) {
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\n");
    // Starts right after a pass, so that none reads the file during the removal.
    ASSERT_TRUE(sentinel.WaitForTimedPass());
    EXPECT_EQ(RunProgram(L"--remove-data"), 0U);
    EXPECT_FALSE(PathExists(SettingsPath()));
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_TRUE(program.IsRunning());
    EXPECT_FALSE(PathExists(SettingsPath()));
    EXPECT_TRUE(IsTopmost(sentinel.Window()));
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(false, ""));
}

// A folder with another program's settings file, and a link to it in place of the data folder.
class LinkedFolder {
public:
    LinkedFolder() {
        EXPECT_TRUE(WriteFileBytes(linked_.Target() + L"\\config.txt", Content));
        EXPECT_EQ(ReadSettings(), Content) << "the link leads there";
    }

    // Holds only the settings file.
    [[nodiscard]] bool IsUntouched() const {
        WIN32_FIND_DATAW found{};
        const FindHandle search(FindFirstFileW((linked_.Target() + L"\\*").c_str(), &found));
        int entries = search ? 1 : 0;
        while (search && FindNextFileW(search.get(), &found) != FALSE) {
            ++entries;
        }
        return entries == 3 && ReadFileBytes(linked_.Target() + L"\\config.txt") == Content;
    }

private:
    static constexpr std::string_view Content = "Target\n";
    LinkedAppData linked_{LinkPlace::DataFolder};
};

TEST_F(DataFolderTest, NothingIsReadWrittenOrDeletedThroughALink) {
    const LinkedFolder linked;
    const HWND target = Window(L"Target");
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_FALSE(IsTopmost(target));
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    EXPECT_TRUE(NotepadProcesses().empty());
    EXPECT_TRUE(linked.IsUntouched());
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_TRUE(linked.IsUntouched());
    EXPECT_EQ(RunProgram(L"--remove-data"), 2U);
    EXPECT_TRUE(linked.IsUntouched());
}

// Without a settings path an added window lasts until the next pass.
TEST_F(DataFolderTest, ProgramRunsWithoutAnApplicationDataFolder) {
    const HWND target = Window(L"Target");
    const std::wstring folder = DataFolder();
    const ShellFolderOverride away(L"AppData", L"Q:\\nowhere");
    const Program program = StartedProgram();
    ASSERT_NE(program.ControlWindow(), nullptr);
    ASSERT_TRUE(SendRowCommand(program, TogglePinCommand, L"Target"));
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_FALSE(IsTopmost(target));
    EXPECT_EQ(RunProgram(L"--install-startup"), 0U);
    EXPECT_EQ(RunProgram(L"--remove-data"), 2U);
    EXPECT_FALSE(PathExists(StartupShortcut())) << "removed before anything else";
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_FALSE(PathExists(folder));
}

TEST_F(DataFolderTest, FolderMovedWhileRunningIsFollowed) {
    const HWND first = Window(L"First");
    const HWND second = Window(L"Second");
    const Program program = StartedProgram("First\n", {first});
    const std::wstring elsewhere = TestPath(L"Elsewhere \x00E4\x65E5");
    CreateDirectoryW(elsewhere.c_str(), nullptr);
    {
        const ShellFolderOverride moved(L"AppData", elsewhere);
        WriteSettings("Second\n");
        EXPECT_TRUE(BecomesTopmost(second));
        EXPECT_EQ(program.ExitByCommand(), 0U);
        RemoveDataFolder();
    }
    RemoveDirectoryW(elsewhere.c_str());
}

}  // namespace
}  // namespace morvane::test
