// The settings file on a real disk, with other programs using it as well.

#include "settings/settings_file.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "base/files.h"
#include "base/owners.h"
#include "desktop/engine_fixture.h"
#include "support/import_patch.h"
#include "support/test_environment.h"
#include "support/test_files.h"

namespace morvane::test {
namespace {

using namespace std::string_literals;

class SettingsFileTest : public testing::Test {
protected:
    void SetUp() override {
        MORVANE_REQUIRE_DISPOSABLE_PROFILE();
        ResetProfile();
        ASSERT_NE(CreateDirectoryW(DataFolder().c_str(), nullptr), FALSE);
    }

    [[nodiscard]] static std::wstring Path() { return SettingsPath(); }

    // Holds the file open as another program would.
    [[nodiscard]] static FileHandle Hold(DWORD access, DWORD sharing) {
        return HoldFile(Path(), access, sharing);
    }
};

PinList ListOf(const std::wstring& pattern) {
    return {.pinning = false, .entries = {{.pattern = pattern, .minWidth = 0, .minHeight = 600}}};
}

std::string TextOf(std::string_view pattern) {
    return std::string(SettingsHeader) + "@pinning=0\n" + std::string(pattern) + "\t0\t600\n";
}

void ExpectDefault(const PinList& list) {
    EXPECT_TRUE(list.pinning);
    EXPECT_TRUE(list.entries.empty());
}

// Expects to read the list that a test wrote as ListOf(pattern).
void ExpectRead(const std::wstring& path, const std::wstring& pattern) {
    const PinList list = ReadSettingsFile(path);
    EXPECT_FALSE(list.pinning);
    ASSERT_EQ(list.entries.size(), 1U);
    EXPECT_EQ(list.entries[0].pattern, pattern);
    EXPECT_EQ(list.entries[0].minWidth, 0);
    EXPECT_EQ(list.entries[0].minHeight, 600);
}

TEST_F(SettingsFileTest, MissingFileIsReadAsTheDefaultAndNotCreated) {
    ExpectDefault(ReadSettingsFile(Path()));
    EXPECT_FALSE(PathExists(Path()));
    ExpectDefault(ReadSettingsFile(L""));
    ExpectDefault(ReadSettingsFile(DataFolder() + L"\\no folder\\config.txt"));
}

TEST_F(SettingsFileTest, WritingCreatesTheFileButNotItsFolder) {
    EXPECT_TRUE(WriteSettingsFile(Path(), ListOf(L"notes")));
    EXPECT_EQ(ReadFileBytes(Path()), TextOf("notes"));
    const std::wstring folder = DataFolder() + L"\\no folder";
    EXPECT_FALSE(WriteSettingsFile(folder + L"\\config.txt", ListOf(L"notes")));
    EXPECT_FALSE(PathExists(folder));
    EXPECT_FALSE(WriteSettingsFile(L"", ListOf(L"notes")));
}

TEST_F(SettingsFileTest, WrittenFileHoldsTheCanonicalTextByteForByte) {
    const PinList list{
        .pinning = false,
        .entries = {{.pattern = L"notepad"},
                    {.pattern = L"Visual Studio Code", .minWidth = 1280, .minHeight = 720},
                    {.pattern = L"\x65E5\x672C \xD83D\xDE00 \x00C9"}}};
    ASSERT_TRUE(WriteSettingsFile(Path(), list));
    EXPECT_EQ(ReadFileBytes(Path()), std::string(SettingsHeader) +
                                         "@pinning=0\nnotepad\nVisual Studio Code\t1280\t720\n"
                                         "\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80 \xC3\x89\n");
}

TEST_F(SettingsFileTest, ShorterContentReplacesTheWholeFile) {
    ASSERT_TRUE(WriteFileBytes(Path(), std::string(100'000, 'x')));
    ASSERT_TRUE(WriteSettingsFile(Path(), ListOf(L"notes")));
    EXPECT_EQ(ReadFileBytes(Path()), TextOf("notes"));
    ASSERT_TRUE(WriteSettingsFile(Path(), PinList{}));
    EXPECT_EQ(ReadFileBytes(Path()), WrittenSettings(""));
}

// A text of the given size, with the entry "notes" at the very end.
std::string TextOfSize(std::size_t size) {
    constexpr std::string_view Settings = "\n@pinning=off\nnotes\t0\t600";
    return std::string(size - Settings.size(), '#').append(Settings);
}

TEST_F(SettingsFileTest, FilesOfEverySizeAreReadToTheEnd) {
    for (const std::size_t size : {30U, 10'000U, 0x3FFFU, 0x4000U, 0x4001U, 10'000'000U}) {
        SCOPED_TRACE(size);
        ASSERT_TRUE(WriteFileBytes(Path(), TextOfSize(size)));
        ExpectRead(Path(), L"notes");
    }
    ASSERT_TRUE(WriteFileBytes(Path(), ""));
    ExpectDefault(ReadSettingsFile(Path()));
}

BOOL WINAPI WriteNothing(HANDLE /*file*/, LPCVOID /*bytes*/, DWORD /*size*/, LPDWORD written,
                         LPOVERLAPPED /*overlapped*/) {
    *written = 0;
    return TRUE;
}

TEST_F(SettingsFileTest, DiskThatAcceptsNothingIsAFailure) {
    {
        const auto disk = Refuse<decltype(&WriteFile), FALSE, ERROR_DISK_FULL>("WriteFile");
        EXPECT_FALSE(WriteSettingsFile(Path(), ListOf(L"notes")));
    }
    ExpectDefault(ReadSettingsFile(Path()));
    const ImportPatch<decltype(&WriteFile)> disk("WriteFile", WriteNothing);
    EXPECT_FALSE(WriteSettingsFile(Path(), ListOf(L"notes")));
    ExpectDefault(ReadSettingsFile(Path()));
}

decltype(&WideCharToMultiByte) originalConversion = nullptr;
std::vector<std::string> heldAtConversions;

int WINAPI NoteWhatTheFileHolds(UINT codePage, DWORD flags, LPCWCH text, int units, LPSTR bytes,
                                int size, LPCCH fallback, LPBOOL usedFallback) {
    heldAtConversions.push_back(ReadSettings().value_or("no file"));
    return originalConversion(codePage, flags, text, units, bytes, size, fallback, usedFallback);
}

TEST_F(SettingsFileTest, FileKeepsWhatItHoldsUntilTheNewTextIsReady) {
    ASSERT_TRUE(WriteFileBytes(Path(), TextOf("notes")));
    heldAtConversions.clear();
    {
        const ImportPatch<decltype(&WideCharToMultiByte)> patch("WideCharToMultiByte",
                                                                NoteWhatTheFileHolds);
        originalConversion = patch.Original();
        EXPECT_TRUE(WriteSettingsFile(Path(), ListOf(L"other")));
    }
    ASSERT_FALSE(heldAtConversions.empty());
    for (const std::string& held : heldAtConversions) {
        EXPECT_EQ(held, TextOf("notes"));
    }
    EXPECT_EQ(ReadFileBytes(Path()), TextOf("other"));
}

decltype(&ReadFile) originalReadFile = nullptr;
int reads = 0;
std::vector<std::string> toBeAppended;

BOOL WINAPI ReadFewBytes(HANDLE file, LPVOID bytes, DWORD size, LPDWORD read,
                         LPOVERLAPPED overlapped) {
    constexpr DWORD Few = 23;
    return originalReadFile(file, bytes, std::min(size, Few), read, overlapped);
}

// Delivers a few bytes and fails.
BOOL WINAPI ReadHalf(HANDLE file, LPVOID bytes, DWORD size, LPDWORD read, LPOVERLAPPED overlapped) {
    ReadFewBytes(file, bytes, size, read, overlapped);
    SetLastError(ERROR_CRC);
    return FALSE;
}

// The second read reports the end of the file, although later reads would deliver more. Fails in
// the end, so that a reader that ignores the end does not loop forever.
BOOL WINAPI ReadBeyondTheEnd(HANDLE file, LPVOID bytes, DWORD size, LPDWORD read,
                             LPOVERLAPPED overlapped) {
    ++reads;
    if (reads == 2) {
        *read = 0;
        return TRUE;
    }
    return reads < 4 ? ReadFewBytes(file, bytes, size, read, overlapped) : FALSE;
}

// Appends to the file between two reads, as another program could.
BOOL WINAPI ReadWhileItGrows(HANDLE file, LPVOID bytes, DWORD size, LPDWORD read,
                             LPOVERLAPPED overlapped) {
    const BOOL result = originalReadFile(file, bytes, size, read, overlapped);
    if (!toBeAppended.empty()) {
        const std::string text = toBeAppended.front();
        toBeAppended.erase(toBeAppended.begin());
        const FileHandle writer = HoldFile(SettingsPath(), FILE_APPEND_DATA, FullSharing);
        DWORD written = 0;
        EXPECT_NE(WriteFile(writer.get(), text.data(), static_cast<DWORD>(text.size()), &written,
                            nullptr),
                  FALSE);
    }
    return result;
}

TEST_F(SettingsFileTest, ShortReadIsNotTheEnd) {
    ASSERT_TRUE(WriteFileBytes(Path(), TextOfSize(10'000)));
    const ImportPatch<decltype(&ReadFile)> disk("ReadFile", ReadFewBytes);
    originalReadFile = disk.Original();
    ExpectRead(Path(), L"notes");
}

TEST_F(SettingsFileTest, FileThatGrowsWhileItIsReadIsReadToTheEnd) {
    ASSERT_TRUE(WriteFileBytes(Path(), "#\n"));
    // The first text is longer than a single read.
    toBeAppended = {std::string(100'000, '#') + "\n", "@pinning=0\n", "notes\t0\t600\n"};
    const ImportPatch<decltype(&ReadFile)> disk("ReadFile", ReadWhileItGrows);
    originalReadFile = disk.Original();
    ExpectRead(Path(), L"notes");
    EXPECT_TRUE(toBeAppended.empty());
}

TEST_F(SettingsFileTest, ReadThatFailsOrGivesNoBytesIsTheEnd) {
    for (const auto read : {ReadHalf, ReadBeyondTheEnd}) {
        ASSERT_TRUE(WriteFileBytes(Path(), "@pinning=0\nnotes\t0\t600\nmore\n"));
        reads = 0;
        const ImportPatch<decltype(&ReadFile)> disk("ReadFile", read);
        originalReadFile = disk.Original();
        ExpectRead(Path(), L"notes");
    }
}

TEST_F(SettingsFileTest, ControlBytesDoNotEndTheFile) {
    ASSERT_TRUE(WriteFileBytes(Path(), "#\x1A\n@pinning=0\r\nnotes\t0\t600\r\n"));
    ExpectRead(Path(), L"notes");
    ASSERT_TRUE(WriteFileBytes(Path(), "#\0\n@pinning=0\nnotes\t0\t600"s));
    ExpectRead(Path(), L"notes");
}

TEST_F(SettingsFileTest, FileOfAnotherProgramIsReadAndWrittenAsItAllows) {
    const struct {
        const char* name;
        DWORD access;
        DWORD sharing;
        bool isRead;
        bool isWritten;
    } owners[] = {
        {"exclusive owner", GENERIC_READ, 0, false, false},
        {"reader that allows no writer", GENERIC_READ, FILE_SHARE_READ, true, false},
        {"reader that allows no reader", GENERIC_READ, FILE_SHARE_WRITE, false, true},
        {"editor", GENERIC_READ | GENERIC_WRITE, FullSharing, true, true},
        // A handle with DELETE access admits only openers that share deletion too.
        {"held for deletion", GENERIC_READ | DELETE, FullSharing, true, true},
    };
    for (const auto& owner : owners) {
        SCOPED_TRACE(owner.name);
        ASSERT_TRUE(WriteFileBytes(Path(), TextOf("notes")));
        {
            const FileHandle holder = Hold(owner.access, owner.sharing);
            ASSERT_TRUE(holder);
            const PinList list = ReadSettingsFile(Path());
            EXPECT_EQ(list.entries.size(), owner.isRead ? 1U : 0U);
            EXPECT_EQ(list.pinning, !owner.isRead);
            EXPECT_EQ(WriteSettingsFile(Path(), ListOf(L"other")), owner.isWritten);
        }
        EXPECT_EQ(ReadFileBytes(Path()), TextOf(owner.isWritten ? "other" : "notes"));
    }
}

// The editor's handle still refers to the file.
TEST_F(SettingsFileTest, FileIsRewrittenInPlace) {
    ASSERT_TRUE(WriteFileBytes(Path(), TextOf("notes")));
    const FileHandle editor = Hold(GENERIC_READ | GENERIC_WRITE, FullSharing);
    ASSERT_TRUE(editor);
    ASSERT_TRUE(WriteSettingsFile(Path(), ListOf(L"other")));
    std::string seen(1000, '\0');
    DWORD count = 0;
    ASSERT_NE(::ReadFile(editor.get(), seen.data(), 1000, &count, nullptr), FALSE);
    seen.resize(count);
    EXPECT_EQ(seen, TextOf("other"));
}

decltype(&CreateFileW) originalCreateFile = nullptr;

// Refuses to open read-only files for writing, as on Windows.
HANDLE WINAPI OpenAsWindowsDoes(LPCWSTR path, DWORD access, DWORD share,
                                LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                                HANDLE pattern) {
    const DWORD attributes = GetFileAttributesW(path);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0 &&
        (access & GENERIC_WRITE) != 0) {
        SetLastError(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    return originalCreateFile(path, access, share, security, disposition, flags, pattern);
}

TEST_F(SettingsFileTest, ReadOnlyFileIsReadAndNotWritten) {
    ASSERT_TRUE(WriteFileBytes(Path(), TextOf("notes")));
    ASSERT_NE(SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_READONLY), FALSE);
    ExpectRead(Path(), L"notes");
    {
        // Wine leaves the attribute to the host, where root may still write.
        const ImportPatch<decltype(&CreateFileW)> windows("CreateFileW", OpenAsWindowsDoes);
        originalCreateFile = windows.Original();
        EXPECT_FALSE(WriteSettingsFile(Path(), PinList{}));
        ExpectRead(Path(), L"notes");
    }
    EXPECT_EQ(ReadFileBytes(Path()), TextOf("notes"));
    ASSERT_NE(SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_NORMAL), FALSE);
    EXPECT_TRUE(WriteSettingsFile(Path(), PinList{}));
}

TEST_F(SettingsFileTest, HiddenFileIsWrittenAndStaysHidden) {
    ASSERT_TRUE(WriteFileBytes(Path(), TextOf("notes")));
    ASSERT_NE(SetFileAttributesW(Path().c_str(), FILE_ATTRIBUTE_HIDDEN), FALSE);
    if ((GetFileAttributesW(Path().c_str()) & FILE_ATTRIBUTE_HIDDEN) == 0) {
        GTEST_SKIP() << "this file system has no hidden files";
    }
    ExpectRead(Path(), L"notes");
    EXPECT_TRUE(WriteSettingsFile(Path(), ListOf(L"other")));
    EXPECT_EQ(ReadFileBytes(Path()), TextOf("other"));
    EXPECT_NE(GetFileAttributesW(Path().c_str()) & FILE_ATTRIBUTE_HIDDEN, 0U);
}

TEST_F(SettingsFileTest, PathsOutsideTheAnsiCodePageWork) {
    const std::wstring folder = DataFolder() + L"\\\x65E5\x672C \x041C\x0438\x0440 \xD83D\xDE00";
    ASSERT_NE(CreateDirectoryW(folder.c_str(), nullptr), FALSE);
    const std::wstring path = folder + L"\\config \x8A2D\x5B9A.txt";
    EXPECT_TRUE(WriteSettingsFile(path, ListOf(L"notes")));
    EXPECT_EQ(ReadFileBytes(path), TextOf("notes"));
    ExpectRead(path, L"notes");
}

TEST_F(SettingsFileTest, DirectoryInPlaceOfTheFileIsNotAFile) {
    ASSERT_NE(CreateDirectoryW(Path().c_str(), nullptr), FALSE);
    ExpectDefault(ReadSettingsFile(Path()));
    EXPECT_FALSE(WriteSettingsFile(Path(), PinList{}));
    EXPECT_NE(GetFileAttributesW(Path().c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0U);
}

TEST_F(SettingsFileTest, LeavesNoHandleAndNoOtherFileBehind) {
    ASSERT_TRUE(WriteSettingsFile(Path(), ListOf(L"notes")));
    ExpectRead(Path(), L"notes");
    {
        const FileHandle sole = Hold(GENERIC_READ | GENERIC_WRITE, 0);
        EXPECT_TRUE(sole) << "a leaked handle would prevent this";
    }
    EXPECT_NE(DeleteFileW(Path().c_str()), FALSE);
    EXPECT_NE(RemoveDirectoryW(DataFolder().c_str()), FALSE) << "a second file would prevent this";
}

}  // namespace
}  // namespace morvane::test
