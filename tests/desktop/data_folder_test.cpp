// Where the data is kept, and that no link is followed.

#include "shell/data_folder.h"

#include <gtest/gtest.h>
#include <string>

#include "desktop/engine_fixture.h"
#include "pin/engine.h"
#include "pin/pin_operations.h"
#include "pin/settings_sync.h"
#include "shell/engine_binding.h"
#include "shell/settings_editor.h"
#include "support/test_environment.h"
#include "support/test_files.h"

namespace morvane::test {
namespace {

class DataFolderPathTest : public testing::Test {
protected:
    void SetUp() override {
        MORVANE_REQUIRE_DISPOSABLE_PROFILE();
        ResetProfile();
        Engine() = PinEngine{};
    }
    void TearDown() override { Engine() = PinEngine{}; }
};

TEST_F(DataFolderPathTest, FolderIsCreatedByEveryQueryForItsPath) {
    ASSERT_FALSE(PathExists(DataFolder()));
    EXPECT_EQ(GetDataFolder(), DataFolder());
    EXPECT_NE(GetFileAttributesW(DataFolder().c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0U);
    EXPECT_EQ(GetDataFolder(), DataFolder()) << "the folder exists";
    EXPECT_TRUE(IsOwnDataFolder(GetDataFolder()));
    ASSERT_NE(RemoveDirectoryW(DataFolder().c_str()), FALSE);
    EXPECT_EQ(GetSettingsPath(), DataFolder() + L"\\config.txt");
    EXPECT_NE(RemoveDirectoryW(DataFolder().c_str()), FALSE) << "created again, and empty";
}

TEST_F(DataFolderPathTest, FolderFollowsTheApplicationData) {
    const std::wstring other = TestPath(L"A user's data \x65E5\x672C");
    CreateDirectoryW(other.c_str(), nullptr);
    {
        const ShellFolderOverride redirected(L"AppData", other);
        EXPECT_EQ(GetDataFolder(), other + L"\\Morvane");
        EXPECT_EQ(GetSettingsPath(), other + L"\\Morvane\\config.txt");
        EXPECT_TRUE(EnsureSettingsFile());
        EXPECT_EQ(ReadFileBytes(other + L"\\Morvane\\config.txt"), WrittenSettings(""));
        RemoveDataFolder();
    }
    EXPECT_NE(RemoveDirectoryW(other.c_str()), FALSE);
    EXPECT_FALSE(PathExists(DataFolder()));
}

TEST_F(DataFolderPathTest, WithoutApplicationDataEverythingIsEmpty) {
    const ShellFolderOverride redirected(L"AppData", L"Q:\\nowhere");
    Engine().settingsPath = L"C:\\elsewhere\\config.txt";
    EXPECT_EQ(GetDataFolder(), L"");
    EXPECT_EQ(GetSettingsPath(), L"");
    EXPECT_FALSE(EnsureSettingsFile());
    EXPECT_EQ(Engine().settingsPath, L"");
    EXPECT_FALSE(IsOwnDataFolder(GetDataFolder()));
}

TEST_F(DataFolderPathTest, FileInPlaceOfTheFolderIsNotALink) {
    ASSERT_TRUE(WriteFileBytes(DataFolder(), "in the way"));
    EXPECT_EQ(GetDataFolder(), DataFolder());
    EXPECT_FALSE(EnsureSettingsFile());
    EXPECT_EQ(ReadFileBytes(DataFolder()), "in the way");
}

TEST_F(DataFolderPathTest, NothingIsReadOrWrittenThroughALink) {
    const LinkedAppData linked(LinkPlace::DataFolder);
    const std::wstring settings = linked.Target() + L"\\config.txt";
    ASSERT_TRUE(WriteFileBytes(settings, "@pinning=0\nplanted\n"));
    ASSERT_EQ(ReadSettings(), "@pinning=0\nplanted\n") << "the link leads there";
    EXPECT_EQ(GetDataFolder(), L"");
    EXPECT_EQ(GetSettingsPath(), L"");
    EXPECT_FALSE(IsOwnDataFolder(DataFolder()));
    EXPECT_FALSE(EnsureSettingsFile());
    RefreshEngineBinding();
    EXPECT_EQ(Engine().settingsPath, L"");
    ReloadSettings();
    EXPECT_TRUE(Engine().pinList.pinning);
    EXPECT_TRUE(Engine().pinList.entries.empty());
    AddWindow(L"Alpha");
    SetPinning(false);
    EXPECT_EQ(ReadFileBytes(settings), "@pinning=0\nplanted\n");
    ASSERT_NE(DeleteFileW(settings.c_str()), FALSE);
    EXPECT_FALSE(EnsureSettingsFile());
    AddWindow(L"Beta");
    EXPECT_NE(RemoveDirectoryW(linked.Target().c_str()), FALSE) << "must still be empty";
}

}  // namespace
}  // namespace morvane::test
