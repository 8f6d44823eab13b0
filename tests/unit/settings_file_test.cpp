#include "settings/settings_file.h"

#include <array>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>

#include "base/owners.h"
#include "base/win.h"
#include "settings/settings_text.h"
#include "unit/printed.h"

namespace morvane::test {

namespace {

constexpr DWORD FullSharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// A folder of its own for one test; goes with the file that it holds.
class ScratchFolder : public testing::Test {
protected:
    ScratchFolder() {
        std::array<wchar_t, MAX_PATH> temporary{};
        GetTempPathW(temporary.size(), temporary.data());
        folder_ = std::wstring(temporary.data()) + L"morvane \u00E9\u7A93 " +
                  std::to_wstring(GetCurrentProcessId());
        EXPECT_NE(CreateDirectoryW(folder_.c_str(), nullptr), FALSE);
    }
    ~ScratchFolder() override {
        DeleteFileW(Path().c_str());
        EXPECT_NE(RemoveDirectoryW(folder_.c_str()), FALSE);
    }

    [[nodiscard]] std::wstring Path() const { return folder_ + L"\\config.txt"; }

    [[nodiscard]] FileHandle Open(DWORD access, DWORD disposition, DWORD sharing) const {
        return FileHandle(CreateFileW(Path().c_str(), access, sharing, nullptr, disposition,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    }

    [[nodiscard]] bool Exists() const {
        return GetFileAttributesW(Path().c_str()) != INVALID_FILE_ATTRIBUTES;
    }

    void WriteBytes(std::string_view bytes) const {
        const FileHandle file = Open(GENERIC_WRITE, CREATE_ALWAYS, FullSharing);
        DWORD count = 0;
        EXPECT_NE(
            WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr),
            FALSE);
        EXPECT_EQ(count, bytes.size());
    }

    [[nodiscard]] std::string Bytes() const {
        const FileHandle file = Open(GENERIC_READ, OPEN_EXISTING, FullSharing);
        std::string bytes(1'000'000, '\0');
        DWORD count = 0;
        EXPECT_NE(
            ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr),
            FALSE);
        bytes.resize(count);
        return bytes;
    }

private:
    std::wstring folder_;
};

using SettingsFile = ScratchFolder;

TEST_F(SettingsFile, ReadsAsTheDefaultListWhenMissingAndIsNotCreated) {
    EXPECT_EQ(Printed(ReadSettingsFile(Path())), Printed(PinList{}));
    EXPECT_FALSE(Exists());
    EXPECT_EQ(Printed(ReadSettingsFile(Path() + L"\\missing\\config.txt")), Printed(PinList{}));
    EXPECT_EQ(Printed(ReadSettingsFile(L"")), Printed(PinList{}));
}

TEST_F(SettingsFile, ReadsAsTheDefaultListWhenItCannotBeOpened) {
    WriteBytes("@pinning=0\nnotepad\n");
    const FileHandle exclusive = Open(GENERIC_READ, OPEN_EXISTING, 0);
    ASSERT_TRUE(exclusive);
    EXPECT_EQ(Printed(ReadSettingsFile(Path())), Printed(PinList{}));
}

TEST_F(SettingsFile, IsReadByteByByte) {
    // An end-of-file character of old and line ends of all kinds, as a text mode would change them.
    WriteBytes("a\r\nb\x1A\rc\n@pinning=0\r\nd");
    EXPECT_EQ(Printed(ReadSettingsFile(Path())), Printed({false, {{L"a"}, {L"b\x1A\rc"}, {L"d"}}}));
    WriteBytes("");
    EXPECT_EQ(Printed(ReadSettingsFile(Path())), Printed(PinList{}));
}

TEST_F(SettingsFile, IsReadToTheEndHoweverLong) {
    for (const std::size_t length : {4095U, 4096U, 4097U, 8192U, 100'000U}) {
        SCOPED_TRACE(length);
        const std::string last = "\n@pinning=0";
        WriteBytes(std::string(length - last.size(), '#') + last);
        EXPECT_EQ(Printed(ReadSettingsFile(Path())), Printed({false, {}}));
    }
}

TEST_F(SettingsFile, IsWrittenByteForByteOverWhatWasThere) {
    const PinList lists[] = {
        {false, {{L"notepad"}, {L"\u00E9\u7A93\U0001F600", 1280, 720}}},
        {true, {}},
    };
    for (const PinList& list : lists) {
        SCOPED_TRACE(Printed(list));
        ASSERT_TRUE(WriteSettingsFile(Path(), list));
        EXPECT_EQ(Bytes(), FormatSettingsText(list));
        EXPECT_EQ(Printed(ReadSettingsFile(Path())), Printed(list));
    }
}

TEST_F(SettingsFile, IsReadAndWrittenWhileAnEditorHoldsItOpen) {
    WriteBytes("notepad\n");
    const FileHandle editor = Open(GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING, FullSharing);
    ASSERT_TRUE(editor);
    EXPECT_EQ(ReadSettingsFile(Path()).entries.size(), 1U);
    EXPECT_TRUE(WriteSettingsFile(Path(), {false, {}}));
    EXPECT_FALSE(ReadSettingsFile(Path()).pinning);
}

TEST_F(SettingsFile, CannotBeWrittenWhereNothingCanBe) {
    EXPECT_FALSE(WriteSettingsFile(L"", {}));
    EXPECT_FALSE(WriteSettingsFile(Path() + L"\\missing\\config.txt", {}));
    EXPECT_FALSE(Exists());

    WriteBytes("notepad\n");
    {
        const FileHandle exclusive = Open(GENERIC_READ, OPEN_EXISTING, 0);
        ASSERT_TRUE(exclusive);
        EXPECT_FALSE(WriteSettingsFile(Path(), {}));
    }
    EXPECT_EQ(Bytes(), "notepad\n");
}

}  // namespace

}  // namespace morvane::test
