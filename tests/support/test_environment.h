#pragma once

#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "base/win.h"

// Tests that start the program change the current user's profile, and others the screen. They run
// only if the harness promises that both are thrown away afterwards (MORVANE_TEST_DISPOSABLE=1).
namespace morvane::test {

[[nodiscard]] bool DisposableProfile();

// Throws std::logic_error outside a disposable profile.
void RequireDisposable();

// Skips the test outside a disposable profile.
#define MORVANE_REQUIRE_DISPOSABLE_PROFILE()                                                     \
    if (!::morvane::test::DisposableProfile())                                                   \
    GTEST_SKIP() << "changes the user's profile or screen; set MORVANE_TEST_DISPOSABLE=1 where " \
                    "both are thrown away"

// Empty if the system reports no such folder. None of these creates a folder.
[[nodiscard]] std::wstring LocalFolder();
[[nodiscard]] std::wstring RoamingFolder();
[[nodiscard]] std::wstring DataFolder();    // the roaming folder's "Morvane"
[[nodiscard]] std::wstring SettingsPath();  // its config.txt
[[nodiscard]] std::wstring StartupFolder();
[[nodiscard]] std::wstring StartupShortcut();  // its Morvane.lnk

// The tests' own files are in one folder beside the data folder, so that they can be removed with
// it.
[[nodiscard]] std::wstring TestFolder();
[[nodiscard]] std::wstring TestPath(const std::wstring& name);  // creates that folder

// Writes config.txt, and the data folder if necessary. Replaces the file in one step, like editors
// that save by renaming: a pass would take a half-written file for a list without the other
// entries. Throws std::runtime_error if it cannot.
void WriteSettings(std::string_view bytes);
[[nodiscard]] std::optional<std::string> ReadSettings();

// Remove the data folder, or empty the Startup folder. Links are not followed. Both throw
// std::logic_error outside a disposable profile.
void RemoveDataFolder();
void EmptyStartupFolder();

// As if neither the program nor a test had ever run: both of the above, and no folder of tests.
void ResetProfile();

// Redirects one of the user's shell folders ("AppData", "Startup") in the registry, for every
// process of the session; the environment variable of that name has no effect. With a folder on a
// drive that does not exist, the system fails to report the folder at all. The destructor restores
// the folder. Throws std::logic_error outside a disposable profile.
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

enum class LinkPlace { DataFolder, InsideDataFolder };

// Redirects the application data to a place where the data folder is a link, or where it holds one
// and a subfolder's subfolder another. They lead to Target(), an empty folder at first.
class LinkedAppData {
public:
    explicit LinkedAppData(LinkPlace place);
    LinkedAppData(const LinkedAppData&) = delete;
    LinkedAppData& operator=(const LinkedAppData&) = delete;
    LinkedAppData(LinkedAppData&&) = delete;
    LinkedAppData& operator=(LinkedAppData&&) = delete;
    ~LinkedAppData();

    [[nodiscard]] std::wstring Target() const { return root_ + L"\\Target"; }

    // Wine 8.0 can neither make nor delete links: deleting one hits its target.
    [[nodiscard]] bool CanBeDeleted() const { return madeHere_; }

private:
    std::wstring root_;
    bool madeHere_;
    ShellFolderOverride appData_;
};

}  // namespace morvane::test
