// Removal of everything the program stores, whatever is in its folder.

#include "shell/data_removal.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "base/owners.h"
#include "support/import_patch.h"
#include "support/test_environment.h"
#include "support/test_files.h"
#include "support/unix_command.h"

namespace morvane::test {
namespace {

// The verbatim form, which allows more than 260 units and trailing dots and blanks.
std::wstring AsItStands(const std::wstring& path) {
    return L"\\\\?\\" + path;
}

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
    const std::wstring neighbour = RoamingFolder() + L"\\Morvane2";
    const std::wstring otherShortcut = StartupFolder() + L"\\Other.lnk";
    MakeFolder(neighbour);
    MakeFile(neighbour + L"\\config.txt");
    MakeFile(otherShortcut);
    MakeFile(StartupShortcut());
    ASSERT_TRUE(WriteSettings("alpha\n"));
    ExpectRemoval();
    EXPECT_FALSE(PathExists(StartupShortcut()));
    EXPECT_TRUE(PathExists(otherShortcut));
    EXPECT_TRUE(PathExists(neighbour + L"\\config.txt"));
    DeleteFileW((neighbour + L"\\config.txt").c_str());
    RemoveDirectoryW(neighbour.c_str());
}

TEST_F(DataRemovalTest, EmptyFolderGoes) {
    MakeFolder(DataFolder());
    ExpectRemoval();
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
    const std::wstring roaming = RoamingFolder();
    const std::wstring folder = roaming + L"\\Morvane";
    const std::wstring neighbour = roaming + L"\\Morvane2";
    std::wstring slashes = roaming;
    std::replace(slashes.begin(), slashes.end(), L'\\', L'/');
    MakeFolder(neighbour);
    MakeFile(neighbour + L"\\config.txt");
    struct Case {
        const char* name;
        std::wstring form;
    };
    const Case cases[] = {
        {"slashes", slashes},
        {"a folder and back", neighbour + L"\\.."},
        {"a separator at the end", roaming + L"\\"},
    };
    for (const Case& item : cases) {
        SCOPED_TRACE(item.name);
        ResetProfile();
        ASSERT_TRUE(WriteSettings("alpha\n"));
        MakeFolder(folder + L"\\inner.");
        MakeFile(folder + L"\\inner.\\file");
        const ShellFolderOverride named(L"AppData", item.form);
        EXPECT_TRUE(RemoveAllData());
        EXPECT_FALSE(PathExists(folder));
        EXPECT_TRUE(PathExists(neighbour + L"\\config.txt"));
    }
    DeleteFileW((neighbour + L"\\config.txt").c_str());
    RemoveDirectoryW(neighbour.c_str());
}

TEST_F(DataRemovalTest, FileInPlaceOfTheFolderGoes) {
    MakeFile(DataFolder());
    ExpectRemoval();
}

TEST_F(DataRemovalTest, OpenFileStopsTheRemovalButTheShortcutIsGone) {
    ASSERT_TRUE(WriteSettings("alpha\n"));
    MakeFile(StartupShortcut());
    {
        const FileHandle editor(CreateFileW(SettingsPath().c_str(), GENERIC_READ,
                                            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(editor);
        EXPECT_FALSE(RemoveAllData());
        EXPECT_EQ(ReadSettings(), "alpha\n");
        EXPECT_FALSE(PathExists(StartupShortcut()));
    }
    ExpectRemoval();
}

TEST_F(DataRemovalTest, ShortcutThatCannotBeDeletedIsNotAFailure) {
    MakeFolder(StartupShortcut());
    ASSERT_TRUE(WriteSettings("alpha\n"));
    ExpectRemoval();
    EXPECT_TRUE(PathExists(StartupShortcut()));
}

// A folder outside the data folder, for links to point to.
class LinkedDataRemovalTest : public DataRemovalTest {
protected:
    void SetUp() override {
        DataRemovalTest::SetUp();
        if (!IsSkipped()) {
            target_ = RoamingFolder() + L"\\Link target";
            MakeFolder(target_);
            MakeFolder(target_ + L"\\inner");
            MakeFile(Sentinel());
            MakeFile(StartupShortcut());
        }
    }
    void TearDown() override {
        if (!IsSkipped()) {
            DeleteFileW(Sentinel().c_str());
            RemoveDirectoryW((target_ + L"\\inner").c_str());
            EXPECT_NE(RemoveDirectoryW(target_.c_str()), FALSE) << "must be unchanged";
        }
        ResetProfile();
    }

    [[nodiscard]] const std::wstring& Target() const { return target_; }
    [[nodiscard]] std::wstring Sentinel() const { return target_ + L"\\inner\\kept.txt"; }

    // Whether the platform can delete a link itself, tried on one elsewhere. Wine acts on its
    // target, which is not empty.
    [[nodiscard]] bool LinksCanBeDeleted() const {
        EXPECT_TRUE(MakeDirectoryLink(LinkElsewhere(), target_));
        const bool deleted =
            RemoveDirectoryW(LinkElsewhere().c_str()) != FALSE && !PathExists(LinkElsewhere());
        RemoveLink(LinkElsewhere());
        return deleted;
    }
    [[nodiscard]] static std::wstring LinkElsewhere() { return RoamingFolder() + L"\\Link"; }

    // Removes a data folder that contains a link.
    void ExpectRemovalBesideTheTarget() const {
        const bool complete = LinksCanBeDeleted();
        EXPECT_EQ(RemoveAllData(), complete);
        EXPECT_EQ(PathExists(DataFolder()), !complete);
        EXPECT_EQ(ReadFileBytes(Sentinel()), "content");
        EXPECT_FALSE(PathExists(StartupShortcut()));
    }

private:
    std::wstring target_;
};

TEST_F(LinkedDataRemovalTest, LinksInsideTheFolderAreNotFollowed) {
    MakeFolder(DataFolder());
    ASSERT_TRUE(MakeDirectoryLink(DataFolder() + L"\\link", Target()));
    ExpectRemovalBesideTheTarget();
}

TEST_F(LinkedDataRemovalTest, LinksDeepInTheFolderAreNotFollowed) {
    MakeFolder(DataFolder());
    MakeFolder(DataFolder() + L"\\a");
    MakeFolder(DataFolder() + L"\\a\\b");
    ASSERT_TRUE(MakeDirectoryLink(DataFolder() + L"\\a\\b\\link", Target()));
    ExpectRemovalBesideTheTarget();
}

using Paths = std::set<std::wstring>;

// The existing links, and which function has deleted which, as on Windows.
struct Links {
    Paths toFolders;
    Paths toFiles;
    Paths deletedAsFolder;
    Paths deletedAsFile;
};

Links links;
decltype(&RemoveDirectoryW) originalRemoveDirectory = nullptr;
decltype(&DeleteFileW) originalDeleteFile = nullptr;

BOOL WINAPI RemoveDirectoryAsWindowsDoes(LPCWSTR path) {
    if (links.toFiles.contains(path)) {
        SetLastError(ERROR_DIRECTORY);
        return FALSE;
    }
    if (!links.toFolders.contains(path)) {
        return originalRemoveDirectory(path);
    }
    links.deletedAsFolder.insert(path);
    RemoveLink(path);
    return TRUE;
}

BOOL WINAPI DeleteFileAsWindowsDoes(LPCWSTR path) {
    if (links.toFolders.contains(path)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    if (!links.toFiles.contains(path)) {
        return originalDeleteFile(path);
    }
    links.deletedAsFile.insert(path);
    RemoveLink(path);
    return TRUE;
}

TEST_F(LinkedDataRemovalTest, LinksInsideTheFolderGoAndTheirTargetsStay) {
    const std::wstring shallow = DataFolder() + L"\\link";
    const std::wstring deep = DataFolder() + L"\\a\\link";
    const std::wstring file = DataFolder() + L"\\a\\link.txt";
    MakeFolder(DataFolder());
    MakeFolder(DataFolder() + L"\\a");
    ASSERT_TRUE(MakeDirectoryLink(shallow, Target()));
    ASSERT_TRUE(MakeDirectoryLink(deep, Target()));
    ASSERT_EQ(RunUnix("ln -s -- " + QuotedForShell(UnixPath(Sentinel())) + " " +
                      QuotedForShell(UnixPath(file)))
                  .exitCode,
              0);
    links = Links{};
    links.toFolders = {AsItStands(shallow), AsItStands(deep), LinkElsewhere()};
    links.toFiles = {AsItStands(file)};
    {
        const ImportPatch<decltype(&RemoveDirectoryW)> folders("RemoveDirectoryW",
                                                               RemoveDirectoryAsWindowsDoes);
        const ImportPatch<decltype(&DeleteFileW)> files("DeleteFileW", DeleteFileAsWindowsDoes);
        originalRemoveDirectory = folders.Original();
        originalDeleteFile = files.Original();
        ExpectRemovalBesideTheTarget();
    }
    EXPECT_FALSE(PathExists(DataFolder()));
    EXPECT_EQ(links.deletedAsFolder, links.toFolders);
    EXPECT_EQ(links.deletedAsFile, links.toFiles);
}

TEST_F(LinkedDataRemovalTest, LinkInPlaceOfTheFolderIsLeftAlone) {
    ASSERT_TRUE(MakeDirectoryLink(DataFolder(), Target()));
    EXPECT_FALSE(RemoveAllData());
    EXPECT_EQ(ReadFileBytes(Sentinel()), "content");
    EXPECT_NE(GetFileAttributesW(DataFolder().c_str()) & FILE_ATTRIBUTE_REPARSE_POINT, 0U);
    EXPECT_FALSE(PathExists(StartupShortcut())) << "removed first, whatever happens next";
    RemoveLink(DataFolder());
}

TEST_F(DataRemovalTest, WithoutApplicationDataTheShortcutGoesAndTheRemovalFails) {
    ASSERT_TRUE(WriteSettings("alpha\n"));
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
