// The settings file as editors may leave it: about to be deleted, hidden, with any kind of line
// endings and control bytes.

#include <gtest/gtest.h>
#include <string>

#include "base/owners.h"
#include "desktop/engine_fixture.h"
#include "settings/settings_file.h"
#include "support/test_environment.h"
#include "support/test_files.h"

namespace morvane::test {
namespace {

class SettingsSharingTest : public testing::Test {
protected:
    void SetUp() override {
        MORVANE_REQUIRE_DISPOSABLE_PROFILE();
        ResetProfile();
        ASSERT_TRUE(WriteSettings("notes\n"));
    }
};

const PinList OtherList{.pinning = true, .entries = {{.pattern = L"other"}}};

// A handle with DELETE access admits only openers that share deletion too.
TEST_F(SettingsSharingTest, FileHeldForDeletionIsReadAndWritten) {
    const FileHandle holder(CreateFileW(SettingsPath().c_str(), GENERIC_READ | DELETE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(holder);
    const FileHandle withoutSharing(CreateFileW(SettingsPath().c_str(), GENERIC_READ,
                                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_FALSE(withoutSharing) << "or the holder would prove nothing";
    const PinList read = ReadSettingsFile(SettingsPath());
    ASSERT_EQ(read.entries.size(), 1U);
    EXPECT_EQ(read.entries[0].pattern, L"notes");
    EXPECT_TRUE(WriteSettingsFile(SettingsPath(), OtherList));
    EXPECT_EQ(ReadSettings(), WrittenSettings("other\n"));
}

TEST_F(SettingsSharingTest, HiddenFileIsWrittenAndStaysHidden) {
    ASSERT_NE(SetFileAttributesW(SettingsPath().c_str(), FILE_ATTRIBUTE_HIDDEN), FALSE);
    if ((GetFileAttributesW(SettingsPath().c_str()) & FILE_ATTRIBUTE_HIDDEN) == 0) {
        GTEST_SKIP() << "this file system has no hidden files";
    }
    EXPECT_EQ(ReadSettingsFile(SettingsPath()).entries.size(), 1U);
    EXPECT_TRUE(WriteSettingsFile(SettingsPath(), OtherList));
    EXPECT_EQ(ReadSettings(), WrittenSettings("other\n"));
    EXPECT_NE(GetFileAttributesW(SettingsPath().c_str()) & FILE_ATTRIBUTE_HIDDEN, 0U);
}

TEST_F(SettingsSharingTest, BytesAreReadAsTheyAre) {
    ASSERT_TRUE(WriteSettings("a\r\nb\x1A\rc\n@pinning=0\r\nd"));
    const PinList read = ReadSettingsFile(SettingsPath());
    EXPECT_FALSE(read.pinning);
    ASSERT_EQ(read.entries.size(), 3U);
    EXPECT_EQ(read.entries[0].pattern, L"a");
    EXPECT_EQ(read.entries[1].pattern, L"b\x1A\rc");
    EXPECT_EQ(read.entries[2].pattern, L"d");
}

}  // namespace
}  // namespace morvane::test
