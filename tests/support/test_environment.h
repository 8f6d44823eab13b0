#pragma once

#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "base/win.h"

// Tests that start the program change the profile of whoever runs them. They do so only where the
// harness vouches that the profile is thrown away afterwards (MORVANE_TEST_DISPOSABLE=1).
namespace morvane::test {

[[nodiscard]] bool DisposableProfile();

// Skips the test, with the reason, outside a disposable profile.
#define MORVANE_REQUIRE_DISPOSABLE_PROFILE()                                               \
    if (!::morvane::test::DisposableProfile())                                             \
    GTEST_SKIP() << "changes the user's profile; set MORVANE_TEST_DISPOSABLE=1 where the " \
                    "profile is thrown away"

// Empty when the system names no such folder. Asking never creates a folder.
[[nodiscard]] std::wstring RoamingFolder();
[[nodiscard]] std::wstring DataFolder();    // the roaming folder's "Morvane"
[[nodiscard]] std::wstring SettingsPath();  // its config.txt
[[nodiscard]] std::wstring StartupFolder();
[[nodiscard]] std::wstring StartupShortcut();  // its Morvane.lnk

// Makes the data folder and writes config.txt as given.
[[nodiscard]] bool WriteSettings(std::string_view bytes);
[[nodiscard]] std::optional<std::string> ReadSettings();

// Take the data folder away, or empty the Startup folder. Links are deleted and not followed. Both
// throw std::logic_error outside a disposable profile.
void RemoveDataFolder();
void EmptyStartupFolder();

// As if the program had never run: both of the above.
void ResetProfile();

// Puts a link of the host's file system to an existing folder at path (which must not exist); the
// program sees a reparse point. RemoveLink leaves what it points to alone.
[[nodiscard]] bool MakeDirectoryLink(const std::wstring& path, const std::wstring& target);
void RemoveLink(const std::wstring& path);

// Redirects one of the user's shell folders ("AppData", "Startup") for every process of the
// session that asks from now on, by the registry: the environment variable of that name has no
// say in it. A folder on a drive that does not exist makes the system's answer a failure. The
// destructor restores the folder. Needs a disposable profile (std::logic_error).
class ShellFolderOverride {
public:
    ShellFolderOverride(std::wstring name, const std::wstring& path);
    ShellFolderOverride(const ShellFolderOverride&) = delete;
    ShellFolderOverride& operator=(const ShellFolderOverride&) = delete;
    ShellFolderOverride(ShellFolderOverride&&) = delete;
    ShellFolderOverride& operator=(ShellFolderOverride&&) = delete;
    ~ShellFolderOverride();

private:
    std::wstring name_;
    std::optional<std::wstring> previous_;
};

}  // namespace morvane::test
