// A removal that fails halfway and is repeated.

#include <array>
#include <gtest/gtest.h>
#include <string>

#include "base/owners.h"
#include "shell/data_removal.h"
#include "shell/remove_tree.h"
#include "support/import_patch.h"
#include "support/test_environment.h"
#include "support/test_files.h"

namespace morvane::test {
namespace {

constexpr INT_PTR NoHandle = -1;  // INVALID_HANDLE_VALUE

class DataRemovalFailureTest : public testing::Test {
protected:
    void SetUp() override {
        MORVANE_REQUIRE_DISPOSABLE_PROFILE();
        ResetProfile();
    }
};

// Three levels with a file in each; one of the files is held open.
TEST_F(DataRemovalFailureTest, HeldFileAndItsFoldersStayUntilItIsReleased) {
    const std::array<std::wstring, 3> folders = {DataFolder(), DataFolder() + L"\\a",
                                                 DataFolder() + L"\\a\\b"};
    for (std::size_t held = 0; held < folders.size(); ++held) {
        SCOPED_TRACE(held);
        for (const std::wstring& folder : folders) {
            ASSERT_NE(CreateDirectoryW(folder.c_str(), nullptr), FALSE);
            ASSERT_TRUE(WriteFileBytes(folder + L"\\file.txt", "content"));
        }
        const std::wstring file = folders.at(held) + L"\\file.txt";
        {
            const FileHandle holder(CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ,
                                                nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                                                nullptr));
            ASSERT_TRUE(holder);
            EXPECT_FALSE(RemoveAllData());
            EXPECT_EQ(ReadFileBytes(file), "content");
            for (std::size_t level = 0; level <= held; ++level) {
                EXPECT_TRUE(PathExists(folders.at(level))) << level;
            }
        }
        EXPECT_TRUE(RemoveAllData());
        EXPECT_FALSE(PathExists(DataFolder()));
    }
}

TEST_F(DataRemovalFailureTest, ReadOnlyFileThatCannotBeChangedStays) {
    ASSERT_NE(CreateDirectoryW(DataFolder().c_str(), nullptr), FALSE);
    const std::wstring file = DataFolder() + L"\\file.txt";
    ASSERT_TRUE(WriteFileBytes(file, "content"));
    ASSERT_NE(SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY), FALSE);
    {
        const auto patch = Refuse<decltype(&CreateFileW), NoHandle>("CreateFileW");
        EXPECT_FALSE(RemoveAllData());
    }
    EXPECT_EQ(ReadFileBytes(file), "content");
    EXPECT_TRUE(RemoveAllData());
    EXPECT_FALSE(PathExists(DataFolder()));
}

decltype(&RemoveDirectoryW) originalRemoveDirectory = nullptr;

// Reports an empty path as not found, which would count as already removed.
BOOL WINAPI FindNothingAtAnEmptyPath(LPCWSTR path) {
    if (*path == L'\0') {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return FALSE;
    }
    return originalRemoveDirectory(path);
}

TEST_F(DataRemovalFailureTest, FolderWhosePathCannotBeResolvedStays) {
    ASSERT_TRUE(WriteSettings("alpha\n"));
    {
        const ImportPatch<decltype(&RemoveDirectoryW)> folders("RemoveDirectoryW",
                                                               FindNothingAtAnEmptyPath);
        originalRemoveDirectory = folders.Original();
        const auto patch = Refuse<decltype(&GetFullPathNameW), 0U>("GetFullPathNameW");
        EXPECT_FALSE(RemoveTree(DataFolder()));
    }
    EXPECT_EQ(ReadSettings(), "alpha\n");
}

TEST_F(DataRemovalFailureTest, FolderThatIsGoneCountsAsRemoved) {
    EXPECT_TRUE(RemoveTree(DataFolder()));
}

}  // namespace
}  // namespace morvane::test
