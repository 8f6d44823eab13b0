// The shortcut in the session's real Startup folder, read back through the shell.

#include "shell/startup_shortcut.h"

#include <array>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/commands.h"
#include "base/owners.h"
#include "base/win_shell.h"
#include "support/languages.h"
#include "support/shortcut.h"
#include "support/test_environment.h"
#include "support/test_files.h"
#include "support/tray_recorder.h"
#include "support/window_owner.h"
#include "ui/tray_icon.h"

namespace morvane::test {
namespace {

// Fails the test and returns an empty shortcut if it cannot be read.
Shortcut ShortcutAt(const std::wstring& path) {
    const std::optional<Shortcut> shortcut = ReadShortcut(path);
    EXPECT_TRUE(shortcut.has_value());
    return shortcut.value_or(Shortcut{});
}

std::wstring OwnPath() {
    std::array<wchar_t, 1024> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
}

class StartupShortcutTest : public testing::Test {
protected:
    void SetUp() override {
        MORVANE_REQUIRE_DISPOSABLE_PROFILE();
        ASSERT_TRUE(com_);
        ResetProfile();
        ChooseLanguage(L"en");
    }
    void TearDown() override { ChooseLanguage(L"en"); }

    [[nodiscard]] static FileHandle LockShortcut() {
        return HoldFile(StartupShortcut(), GENERIC_READ, 0);
    }

private:
    ComApartment com_;
};

TEST_F(StartupShortcutTest, PathsComeFromTheShell) {
    EXPECT_FALSE(GetStartupFolder().empty());
    EXPECT_EQ(GetStartupFolder(), StartupFolder());
    EXPECT_EQ(GetStartupShortcutPath(), StartupFolder() + L"\\Morvane.lnk");
}

TEST_F(StartupShortcutTest, ShortcutHoldsTargetAndDescriptionAndNothingElse) {
    EXPECT_FALSE(IsStartupEnabled());
    EXPECT_TRUE(InstallStartupShortcut());
    EXPECT_TRUE(IsStartupEnabled());
    const Shortcut content = ShortcutAt(StartupShortcut());
    EXPECT_EQ(content.target, OwnPath());
    EXPECT_EQ(content.description, L"Keep selected windows always on top");
    EXPECT_EQ(content.arguments, L"");
    EXPECT_EQ(content.workingFolder, L"");
    EXPECT_EQ(content.iconPath, L"");
    EXPECT_EQ(content.iconIndex, 0);
    EXPECT_EQ(content.hotKey, 0);
    EXPECT_EQ(content.showCommand, SW_SHOWNORMAL);
}

TEST_F(StartupShortcutTest, DescriptionIsInTheLanguageOfTheInstallation) {
    ChooseLanguage(L"de");
    ASSERT_TRUE(InstallStartupShortcut());
    EXPECT_EQ(ShortcutAt(StartupShortcut()).description,
              ExpectedText(StrAppDescription, Language::German));
    ChooseLanguage(L"ja");
    EXPECT_TRUE(IsStartupEnabled());
    EXPECT_EQ(ShortcutAt(StartupShortcut()).description,
              ExpectedText(StrAppDescription, Language::German))
        << "not updated";
    ASSERT_TRUE(InstallStartupShortcut());
    EXPECT_EQ(ShortcutAt(StartupShortcut()).description,
              ExpectedText(StrAppDescription, Language::Japanese));
}

TEST_F(StartupShortcutTest, SecondInstallationOverwritesTheFirst) {
    ASSERT_TRUE(WriteFileBytes(StartupShortcut(), std::string(5000, 'x')));
    EXPECT_TRUE(IsStartupEnabled()) << "the content is ignored";
    EXPECT_TRUE(InstallStartupShortcut());
    EXPECT_TRUE(InstallStartupShortcut());
    EXPECT_EQ(ShortcutAt(StartupShortcut()).target, OwnPath());
    RemoveStartupShortcut();
    EXPECT_NE(RemoveDirectoryW(StartupFolder().c_str()), FALSE) << "must be empty now";
    EXPECT_NE(CreateDirectoryW(StartupFolder().c_str(), nullptr), FALSE);
}

TEST_F(StartupShortcutTest, RemovalDeletesOnlyTheShortcut) {
    RemoveStartupShortcut();
    EXPECT_FALSE(IsStartupEnabled());
    const std::wstring other = StartupFolder() + L"\\Other.lnk";
    ASSERT_TRUE(WriteFileBytes(other, "kept"));
    ASSERT_TRUE(InstallStartupShortcut());
    RemoveStartupShortcut();
    EXPECT_FALSE(IsStartupEnabled());
    EXPECT_FALSE(PathExists(StartupShortcut()));
    EXPECT_EQ(ReadFileBytes(other), "kept");
}

TEST_F(StartupShortcutTest, DirectoryOfThatNameCountsAsEnabled) {
    ASSERT_NE(CreateDirectoryW(StartupShortcut().c_str(), nullptr), FALSE);
    EXPECT_TRUE(IsStartupEnabled());
    EXPECT_FALSE(InstallStartupShortcut());
    RemoveStartupShortcut();
    EXPECT_TRUE(IsStartupEnabled());
}

TEST_F(StartupShortcutTest, LockedAndReadOnlyShortcutsStay) {
    ASSERT_TRUE(WriteFileBytes(StartupShortcut(), "locked"));
    {
        const FileHandle lock = LockShortcut();
        ASSERT_TRUE(lock);
        EXPECT_FALSE(InstallStartupShortcut());
        RemoveStartupShortcut();
        EXPECT_TRUE(IsStartupEnabled());
    }
    EXPECT_EQ(ReadFileBytes(StartupShortcut()), "locked");
    SetFileAttributesW(StartupShortcut().c_str(), FILE_ATTRIBUTE_READONLY);
    RemoveStartupShortcut();
    EXPECT_TRUE(IsStartupEnabled());
    EXPECT_EQ(ReadFileBytes(StartupShortcut()), "locked");
    SetFileAttributesW(StartupShortcut().c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(StartupShortcutTest, FolderOutsideTheAnsiCodePageWorks) {
    const std::wstring folder = TestPath(L"\x81EA\x52D5 \x0437\x0430\x043F\x0443\x0441\x043A");
    CreateDirectoryW(folder.c_str(), nullptr);
    {
        const ShellFolderOverride redirected(L"Startup", folder);
        ASSERT_EQ(GetStartupShortcutPath(), folder + L"\\Morvane.lnk");
        EXPECT_TRUE(InstallStartupShortcut());
        EXPECT_EQ(ShortcutAt(folder + L"\\Morvane.lnk").target, OwnPath());
        RemoveStartupShortcut();
    }
    EXPECT_NE(RemoveDirectoryW(folder.c_str()), FALSE);
}

TEST_F(StartupShortcutTest, MissingFolderIsNotCreated) {
    const std::wstring folder = TestPath(L"No startup folder");
    const ShellFolderOverride redirected(L"Startup", folder);
    EXPECT_FALSE(InstallStartupShortcut());
    EXPECT_FALSE(IsStartupEnabled());
    RemoveStartupShortcut();
    EXPECT_FALSE(PathExists(folder));
}

TEST_F(StartupShortcutTest, WithoutAStartupFolderThereIsNoPath) {
    const ShellFolderOverride redirected(L"Startup", L"Q:\\nowhere");
    EXPECT_EQ(GetStartupFolder(), L"");
    EXPECT_EQ(GetStartupShortcutPath(), L"");
    EXPECT_FALSE(IsStartupEnabled());
    EXPECT_FALSE(InstallStartupShortcut());
    RemoveStartupShortcut();
}

// The menu command and its balloons.
class StartupToggleTest : public StartupShortcutTest {
protected:
    void SetUp() override {
        StartupShortcutTest::SetUp();
        AddTrayIcon(owner_.get(), GetModuleHandleW(nullptr));
    }
    void TearDown() override {
        RemoveTrayIcon();
        StartupShortcutTest::TearDown();
    }

    void ExpectAnswer(std::wstring_view text, DWORD kind) {
        recorder_.Forget();
        RunCommand(owner_.get(), 1010);
        const std::vector<TrayCall> calls = recorder_.Calls();
        ASSERT_EQ(calls.size(), 1U);
        EXPECT_EQ(calls[0].infoTitle, L"Morvane");
        EXPECT_EQ(calls[0].info, text);
        EXPECT_EQ(calls[0].infoFlags, kind);
    }

private:
    TrayRecorder recorder_;
    WindowOwner owner_ = MessageOnlyWindow();
};

TEST_F(StartupToggleTest, ShortcutIsInstalledThenRemovedAndAnnounced) {
    ExpectAnswer(ExpectedText(StrStartupEnabled), NIIF_INFO);
    EXPECT_TRUE(IsStartupEnabled());
    ExpectAnswer(ExpectedText(StrStartupDisabled), NIIF_INFO);
    EXPECT_FALSE(IsStartupEnabled());
}

TEST_F(StartupToggleTest, FailedRemovalIsAnnouncedAsDone) {
    ASSERT_TRUE(WriteFileBytes(StartupShortcut(), "locked or read-only"));
    {
        const FileHandle lock = LockShortcut();
        ExpectAnswer(ExpectedText(StrStartupDisabled), NIIF_INFO);
    }
    EXPECT_TRUE(IsStartupEnabled());
    SetFileAttributesW(StartupShortcut().c_str(), FILE_ATTRIBUTE_READONLY);
    ExpectAnswer(ExpectedText(StrStartupDisabled), NIIF_INFO);
    EXPECT_TRUE(IsStartupEnabled());
    SetFileAttributesW(StartupShortcut().c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(StartupToggleTest, FailedInstallationIsAWarning) {
    const ShellFolderOverride redirected(L"Startup", L"Q:\\nowhere");
    ExpectAnswer(ExpectedText(StrStartupFailed), NIIF_WARNING);
}

}  // namespace
}  // namespace morvane::test
