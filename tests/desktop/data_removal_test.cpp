// Removal of everything the program stores, whatever is in its folder and whatever fails.

#include "shell/data_removal.h"

#include <algorithm>
#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "base/owners.h"
#include "shell/remove_tree.h"
#include "support/import_patch.h"
#include "support/test_environment.h"
#include "support/test_files.h"

namespace morvane::test {
namespace {

constexpr INT_PTR NoHandle = -1;  // INVALID_HANDLE_VALUE

class DataRemovalTest : public testing::Test {
protected:
    void SetUp() override {
        MORVANE_REQUIRE_DISPOSABLE_PROFILE();
        ResetProfile();
    }

    static void MakeFolder(const std::wstring& path) {
        ASSERT_NE(CreateDirectoryW(AsItStands(path).c_str(), nullptr), FALSE) << GetLastError();
    }
    static void MakeFile(const std::wstring& path) {
        ASSERT_TRUE(WriteFileBytes(AsItStands(path), "content"));
    }
    static void SetAttributes(const std::wstring& path, DWORD attributes) {
        ASSERT_NE(SetFileAttributesW(AsItStands(path).c_str(), attributes), FALSE);
    }
    static void ExpectRemoval() {
        EXPECT_TRUE(RemoveAllData());
        EXPECT_FALSE(PathExists(DataFolder()));
    }
};

TEST_F(DataRemovalTest, WhereTheProgramNeverRanNothingIsLeftBehind) {
    ExpectRemoval();
    EXPECT_TRUE(PathExists(RoamingFolder()));
    EXPECT_TRUE(PathExists(StartupFolder()));
}

TEST_F(DataRemovalTest, SettingsAndShortcutGoAndNeighboursStay) {
    const std::wstring roaming = TestPath(L"Roaming");
    MakeFolder(roaming);
    const ShellFolderOverride redirected(L"AppData", roaming);
    const std::wstring neighbour = roaming + L"\\Morvane2";
    const std::wstring otherShortcut = StartupFolder() + L"\\Other.lnk";
    MakeFolder(neighbour);
    MakeFile(neighbour + L"\\config.txt");
    MakeFile(otherShortcut);
    MakeFile(StartupShortcut());
    WriteSettings("alpha\n");
    ExpectRemoval();
    EXPECT_FALSE(PathExists(StartupShortcut()));
    EXPECT_TRUE(PathExists(otherShortcut));
    EXPECT_TRUE(PathExists(neighbour + L"\\config.txt"));
}

TEST_F(DataRemovalTest, NestedFoldersAndManyFilesGo) {
    MakeFolder(DataFolder());
    for (const wchar_t* folder : {L"\\a", L"\\a\\b", L"\\a\\b\\c", L"\\empty", L"\\...x"}) {
        MakeFolder(DataFolder() + folder);
        for (int index = 0; index < 30; ++index) {
            MakeFile(DataFolder() + folder + L"\\file " + std::to_wstring(index) + L".txt");
        }
    }
    MakeFile(DataFolder() + L"\\\x65E5\x672C \xD83D\xDE00.txt");
    MakeFile(DataFolder() + L"\\.hidden");
    ExpectRemoval();
}

TEST_F(DataRemovalTest, ReadOnlyAndHiddenItemsGo) {
    MakeFolder(DataFolder());
    MakeFolder(DataFolder() + L"\\read-only");
    for (const wchar_t* file : {L"\\a.txt", L"\\b.txt", L"\\c.txt", L"\\read-only\\d.txt"}) {
        MakeFile(DataFolder() + file);
        SetAttributes(DataFolder() + file, FILE_ATTRIBUTE_READONLY);
    }
    SetAttributes(DataFolder() + L"\\b.txt", FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    SetAttributes(DataFolder() + L"\\c.txt", FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_HIDDEN);
    SetAttributes(DataFolder() + L"\\read-only", FILE_ATTRIBUTE_READONLY);
    SetAttributes(DataFolder(), FILE_ATTRIBUTE_READONLY);
    ExpectRemoval();
}

TEST_F(DataRemovalTest, PathsBeyondTheUsualLengthGo) {
    std::wstring folder = DataFolder();
    MakeFolder(folder);
    while (folder.size() < 1500) {
        folder += L"\\" + std::wstring(100, L'd');
        MakeFolder(folder);
        MakeFile(folder + L"\\file.txt");
    }
    ExpectRemoval();
}

TEST_F(DataRemovalTest, NamesThatEndInDotsAndBlanksGo) {
    MakeFolder(DataFolder());
    MakeFolder(DataFolder() + L"\\folder.");
    MakeFolder(DataFolder() + L"\\folder ");
    MakeFile(DataFolder() + L"\\folder.\\file.");
    MakeFile(DataFolder() + L"\\folder \\file ");
    MakeFile(DataFolder() + L"\\file..");
    MakeFile(DataFolder() + L"\\file . ");
    ASSERT_TRUE(PathExists(AsItStands(DataFolder() + L"\\folder.\\file.")));
    ExpectRemoval();
}

TEST_F(DataRemovalTest, FolderGoesWhateverTheFormOfItsPath) {
    const std::wstring roaming = TestPath(L"Roaming");
    const std::wstring folder = roaming + L"\\Morvane";
    const std::wstring neighbour = roaming + L"\\Morvane2";
    std::wstring slashes = roaming;
    std::replace(slashes.begin(), slashes.end(), L'\\', L'/');
    MakeFolder(roaming);
    MakeFolder(neighbour);
    MakeFile(neighbour + L"\\config.txt");
    const ShellFolderOverride redirected(L"AppData", roaming);
    const struct {
        const char* name;
        std::wstring form;
    } cases[] = {
        {"slashes", slashes},
        {"a folder and back", neighbour + L"\\.."},
        {"a separator at the end", roaming + L"\\"},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(item.name);
        ResetProfile();
        WriteSettings("alpha\n");
        MakeFolder(folder + L"\\inner.");
        MakeFile(folder + L"\\inner.\\file");
        const ShellFolderOverride named(L"AppData", item.form);
        EXPECT_TRUE(RemoveAllData());
        EXPECT_FALSE(PathExists(folder));
        EXPECT_TRUE(PathExists(neighbour + L"\\config.txt"));
    }
}

TEST_F(DataRemovalTest, FileInPlaceOfTheFolderGoes) {
    MakeFile(DataFolder());
    ExpectRemoval();
}

// Three levels with a file in each; one of the files is held open.
TEST_F(DataRemovalTest, HeldFileAndItsFoldersStayUntilItIsReleasedButTheShortcutIsGone) {
    const std::array<std::wstring, 3> folders = {DataFolder(), DataFolder() + L"\\a",
                                                 DataFolder() + L"\\a\\b"};
    for (std::size_t held = 0; held < folders.size(); ++held) {
        SCOPED_TRACE(held);
        for (const std::wstring& folder : folders) {
            MakeFolder(folder);
            MakeFile(folder + L"\\file.txt");
        }
        MakeFile(StartupShortcut());
        const std::wstring file = folders.at(held) + L"\\file.txt";
        {
            const FileHandle holder =
                HoldFile(file, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
            ASSERT_TRUE(holder);
            EXPECT_FALSE(RemoveAllData());
            EXPECT_EQ(ReadFileBytes(file), "content");
            EXPECT_FALSE(PathExists(StartupShortcut()));
        }
        ExpectRemoval();
    }
}

TEST_F(DataRemovalTest, ReadOnlyFileThatCannotBeChangedStays) {
    MakeFolder(DataFolder());
    const std::wstring file = DataFolder() + L"\\file.txt";
    MakeFile(file);
    SetAttributes(file, FILE_ATTRIBUTE_READONLY);
    {
        const auto patch = Refuse<decltype(&CreateFileW), NoHandle>("CreateFileW");
        EXPECT_FALSE(RemoveAllData());
    }
    EXPECT_EQ(ReadFileBytes(file), "content");
    ExpectRemoval();
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

TEST_F(DataRemovalTest, FolderWhosePathCannotBeResolvedStays) {
    WriteSettings("alpha\n");
    {
        const ImportPatch<decltype(&RemoveDirectoryW)> folders("RemoveDirectoryW",
                                                               FindNothingAtAnEmptyPath);
        originalRemoveDirectory = folders.Original();
        const auto patch = Refuse<decltype(&GetFullPathNameW), 0U>("GetFullPathNameW");
        EXPECT_FALSE(RemoveTree(DataFolder()));
    }
    EXPECT_EQ(ReadSettings(), "alpha\n");
}

TEST_F(DataRemovalTest, FolderThatIsGoneCountsAsRemoved) {
    EXPECT_TRUE(RemoveTree(DataFolder()));
}

TEST_F(DataRemovalTest, ShortcutThatCannotBeDeletedIsNotAFailure) {
    MakeFolder(StartupShortcut());
    WriteSettings("alpha\n");
    ExpectRemoval();
    EXPECT_TRUE(PathExists(StartupShortcut()));
}

TEST_F(DataRemovalTest, LinksInTheFolderAreNotFollowed) {
    const LinkedAppData linked(LinkPlace::InsideDataFolder);
    const std::wstring sentinel = linked.Target() + L"\\inner\\kept.txt";
    MakeFolder(linked.Target() + L"\\inner");
    MakeFile(sentinel);
    MakeFile(StartupShortcut());
    ASSERT_TRUE(PathExists(DataFolder() + L"\\link\\inner\\kept.txt"));
    ASSERT_TRUE(PathExists(DataFolder() + L"\\a\\b\\link\\inner\\kept.txt"));
    EXPECT_EQ(RemoveAllData(), linked.CanBeDeleted());
    EXPECT_NE(PathExists(DataFolder()), linked.CanBeDeleted());
    EXPECT_EQ(ReadFileBytes(sentinel), "content");
    EXPECT_FALSE(PathExists(StartupShortcut()));
}

TEST_F(DataRemovalTest, LinkInPlaceOfTheFolderIsLeftAlone) {
    const LinkedAppData linked(LinkPlace::DataFolder);
    MakeFile(linked.Target() + L"\\kept.txt");
    MakeFile(StartupShortcut());
    EXPECT_FALSE(RemoveAllData());
    EXPECT_EQ(ReadFileBytes(DataFolder() + L"\\kept.txt"), "content");
    EXPECT_NE(GetFileAttributesW(DataFolder().c_str()) & FILE_ATTRIBUTE_REPARSE_POINT, 0U);
    EXPECT_FALSE(PathExists(StartupShortcut())) << "removed first, whatever happens next";
}

// Stand-ins for links, which every system has: what is called so counts as a link, and such a
// folder can be deleted while it holds this file, as if that were in its target.
constexpr std::wstring_view LinkName = L"link";
constexpr const wchar_t* InTarget = L"\\kept.txt";

std::set<std::wstring> deletedLinks;
decltype(&FindNextFileW) originalFindNext = nullptr;

BOOL WINAPI FindNextWithLinks(HANDLE search, LPWIN32_FIND_DATAW found) {
    const BOOL more = originalFindNext(search, found);
    if (std::wstring_view(found->cFileName).starts_with(LinkName)) {
        found->dwFileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    }
    return more;
}

BOOL WINAPI RemoveDirectoryOrLink(LPCWSTR path) {
    const std::wstring content = std::wstring(path) + InTarget;
    if (PathExists(content)) {
        deletedLinks.insert(path);
        DeleteFileW(content.c_str());
    }
    return originalRemoveDirectory(path);
}

TEST_F(DataRemovalTest, LinksInTheFolderGoAsWhatTheyAre) {
    const std::wstring shallow = DataFolder() + L"\\link";
    const std::wstring deep = DataFolder() + L"\\a\\link";
    for (const std::wstring& folder : {DataFolder(), DataFolder() + L"\\a", shallow, deep}) {
        MakeFolder(folder);
    }
    MakeFile(shallow + InTarget);
    MakeFile(deep + InTarget);
    MakeFile(DataFolder() + L"\\a\\link.txt");
    deletedLinks.clear();
    {
        const ImportPatch<decltype(&FindNextFileW)> search("FindNextFileW", FindNextWithLinks);
        const ImportPatch<decltype(&RemoveDirectoryW)> folders("RemoveDirectoryW",
                                                               RemoveDirectoryOrLink);
        originalFindNext = search.Original();
        originalRemoveDirectory = folders.Original();
        ExpectRemoval();
    }
    EXPECT_THAT(deletedLinks, testing::UnorderedElementsAre(AsItStands(shallow), AsItStands(deep)));
}

TEST_F(DataRemovalTest, WithoutApplicationDataTheShortcutGoesAndTheRemovalFails) {
    WriteSettings("alpha\n");
    MakeFile(StartupShortcut());
    const std::wstring shortcut = StartupShortcut();
    {
        const ShellFolderOverride redirected(L"AppData", L"Q:\\nowhere");
        EXPECT_FALSE(RemoveAllData());
        EXPECT_FALSE(PathExists(shortcut));
    }
    EXPECT_EQ(ReadSettings(), "alpha\n");
}

}  // namespace
}  // namespace morvane::test
