// The program's data folder: missing, elsewhere, a link, removed.

#include <algorithm>

#include "program/notepad.h"
#include "program/scene.h"

namespace morvane::test {
namespace {

using DataFolderTest = ProgramTest;

TEST_F(DataFolderTest, RemovalWhereTheProgramNeverRanLeavesNothing) {
    EXPECT_EQ(RunProgram(L"--remove-data"), 0U);
    EXPECT_FALSE(PathExists(DataFolder()));
}

TEST_F(DataFolderTest, RemovalTakesEverythingInTheFolderAndTheShortcut) {
    ASSERT_EQ(RunProgram(L"--install-startup"), 0U);
    ASSERT_TRUE(WriteSettings("Target\n"));
    const std::wstring inner = DataFolder() + L"\\in\\side";
    ASSERT_NE(CreateDirectoryW((DataFolder() + L"\\in").c_str(), nullptr), FALSE);
    ASSERT_NE(CreateDirectoryW(inner.c_str(), nullptr), FALSE);
    ASSERT_TRUE(WriteFileBytes(inner + L"\\file", "x"));
    ASSERT_NE(SetFileAttributesW((inner + L"\\file").c_str(), FILE_ATTRIBUTE_READONLY), FALSE);
    EXPECT_EQ(RunProgram(L"--remove-data"), 0U);
    EXPECT_FALSE(PathExists(DataFolder()));
    EXPECT_FALSE(PathExists(StartupShortcut()));
}

TEST_F(DataFolderTest, RemovalTakesTheFolderOfAPathWithSlashes) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    std::wstring slashes = RoamingFolder();
    std::replace(slashes.begin(), slashes.end(), L'\\', L'/');
    const ShellFolderOverride named(L"AppData", slashes);
    EXPECT_EQ(RunProgram(L"--remove-data"), 0U);
    EXPECT_FALSE(PathExists(SettingsPath()));
}

TEST_F(DataFolderTest, RemovalThatFailsIsReported) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    const FileHandle lock(CreateFileW(SettingsPath().c_str(), GENERIC_READ, 0, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(lock);
    EXPECT_EQ(RunProgram(L"--remove-data"), 2U);
    EXPECT_TRUE(PathExists(SettingsPath()));
}

TEST_F(DataFolderTest, RemovalLeavesARunningInstanceAlive) {
    ASSERT_TRUE(EditSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    // Starts right after a pass, so that none reads the file during the removal.
    ASSERT_TRUE(sentinel.WaitForTimedPass());
    EXPECT_EQ(RunProgram(L"--remove-data"), 0U);
    EXPECT_FALSE(PathExists(SettingsPath()));
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_TRUE(program.IsRunning());
    EXPECT_FALSE(PathExists(SettingsPath()));
    EXPECT_TRUE(IsTopmost(sentinel.Window()));
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(false, {}));
}

// A folder with a settings file, and a link to it in place of the data folder.
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

TEST_F(DataFolderTest, NothingIsReadOrWrittenThroughALink) {
    const LinkedFolder linked;
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_FALSE(IsTopmost(target));
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    EXPECT_TRUE(NotepadProcesses().empty());
    EndNotepads();
    EXPECT_TRUE(linked.IsUntouched());
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_TRUE(linked.IsUntouched());
}

TEST_F(DataFolderTest, NothingIsDeletedThroughALink) {
    const LinkedFolder linked;
    ASSERT_EQ(RunProgram(L"--install-startup"), 0U);
    EXPECT_EQ(RunProgram(L"--remove-data"), 2U);
    EXPECT_TRUE(linked.IsUntouched());
    EXPECT_FALSE(PathExists(StartupShortcut())) << "removed before anything else";
}

// Without a settings path an added window lasts until the next pass.
TEST_F(DataFolderTest, ProgramRunsWithoutAnApplicationDataFolder) {
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const std::wstring folder = DataFolder();
    const ShellFolderOverride away(L"AppData", L"Q:\\nowhere");
    const Program program = StartedProgram();
    ASSERT_NE(program.ControlWindow(), nullptr);
    ASSERT_TRUE(SendRowCommand(program, TogglePinCommand, L"Target"));
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_FALSE(IsTopmost(target));
    EXPECT_EQ(RunProgram(L"--install-startup"), 0U);
    EXPECT_EQ(RunProgram(L"--remove-data"), 2U);
    EXPECT_FALSE(PathExists(StartupShortcut()));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_FALSE(PathExists(folder));
}

TEST_F(DataFolderTest, FileInPlaceOfTheFolderMeansNoEntries) {
    ASSERT_TRUE(WriteFileBytes(DataFolder(), "Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_FALSE(IsTopmost(target));
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_EQ(ReadFileBytes(DataFolder()), "Target\n");
}

TEST_F(DataFolderTest, FolderMovedWhileRunningIsFollowed) {
    ASSERT_TRUE(WriteSettings("First\n"));
    Actor actor;
    const HWND first = actor.Create({.title = L"First"});
    const HWND second = actor.Create({.title = L"Second"});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(first));
    const std::wstring elsewhere = RoamingFolder() + L"\\Elsewhere \x00E4\x65E5";
    CreateDirectoryW(elsewhere.c_str(), nullptr);
    {
        const ShellFolderOverride moved(L"AppData", elsewhere);
        ASSERT_TRUE(EditSettings("Second\n"));
        EXPECT_TRUE(BecomesTopmost(second));
        EXPECT_EQ(program.ExitByCommand(), 0U);
        RemoveDataFolder();
    }
    RemoveDirectoryW(elsewhere.c_str());
}

}  // namespace
}  // namespace morvane::test
