// What the program does with a switch, and what counts as one.

#include <algorithm>

#include "program/scene.h"
#include "support/child_process.h"

namespace morvane::test {
namespace {

using SwitchesTest = ProgramTest;

enum class Effect { Installs, RemovesShortcut, RemovesData };

struct SwitchCase {
    const char* name;
    const wchar_t* arguments;
    Effect effect;
};

constexpr SwitchCase SwitchCases[] = {
    {"install", L"--install-startup", Effect::Installs},
    {"install in upper case", L"--INSTALL-STARTUP", Effect::Installs},
    {"install in mixed case", L"--Install-startUP", Effect::Installs},
    {"install glued to text", L"xx--install-startupyy", Effect::Installs},
    {"install in quotes", L"\"--install-startup\"", Effect::Installs},
    {"install inside an argument", L"--note=--install-startup.", Effect::Installs},
    {"install behind another argument", L"/quiet   --install-startup", Effect::Installs},
    {"install before data removal", L"--install-startup --remove-data", Effect::Installs},
    {"install after data removal", L"--remove-data --install-startup", Effect::Installs},
    {"install after startup removal", L"--remove-startup --install-startup", Effect::Installs},
    {"startup removal", L"--remove-startup", Effect::RemovesShortcut},
    {"startup removal in mixed case", L"--ReMoVe-StArTuP", Effect::RemovesShortcut},
    {"startup removal after data removal", L"--remove-data --remove-startup",
     Effect::RemovesShortcut},
    {"startup removal glued", L"a--remove-startup--remove-datab", Effect::RemovesShortcut},
    {"data removal", L"--remove-data", Effect::RemovesData},
    {"data removal in upper case", L"--REMOVE-DATA", Effect::RemovesData},
    {"data removal in quotes", L"\"x --remove-data\"", Effect::RemovesData},
};

TEST_F(SwitchesTest, OnlyTheFirstSwitchInTheFixedOrderActs) {
    for (const SwitchCase& item : SwitchCases) {
        ResetProfile();
        ASSERT_TRUE(WriteSettings("kept\n")) << item.name;
        if (item.effect != Effect::Installs) {
            ASSERT_TRUE(WriteFileBytes(StartupShortcut(), "old")) << item.name;
        }
        EXPECT_EQ(RunProgram(item.arguments), 0U) << item.name;
        EXPECT_EQ(PathExists(StartupShortcut()), item.effect == Effect::Installs) << item.name;
        EXPECT_EQ(PathExists(DataFolder()), item.effect != Effect::RemovesData) << item.name;
        EXPECT_EQ(PathExists(SettingsPath()), item.effect != Effect::RemovesData) << item.name;
    }
}

TEST_F(SwitchesTest, ShortcutNamesTheProgramAndNothingElse) {
    ASSERT_EQ(RunProgram(L"--install-startup"), 0U);
    const Shortcut shortcut = ReadShortcut(StartupShortcut()).value_or(Shortcut{});
    EXPECT_EQ(CompareStringOrdinal(shortcut.target.c_str(), -1,
                                   RequiredPath(L"MORVANE_TEST_PROGRAM").c_str(), -1, TRUE),
              CSTR_EQUAL);
    EXPECT_EQ(shortcut.description, L"Keep selected windows always on top");
    EXPECT_EQ(shortcut.arguments, L"");
    EXPECT_EQ(shortcut.workingFolder, L"");
    EXPECT_EQ(shortcut.iconPath, L"");
    EXPECT_EQ(shortcut.showCommand, SW_SHOWNORMAL);
    EXPECT_EQ(shortcut.hotKey, 0);
}

TEST_F(SwitchesTest, InstallingTwiceSucceedsBothTimesAndLeavesOneShortcut) {
    EXPECT_EQ(RunProgram(L"--install-startup"), 0U);
    EXPECT_EQ(RunProgram(L"--install-startup"), 0U);
    WIN32_FIND_DATAW found{};
    const FindHandle search(FindFirstFileW((StartupFolder() + L"\\*").c_str(), &found));
    std::vector<std::wstring> names;
    do {
        names.emplace_back(static_cast<const wchar_t*>(found.cFileName));
    } while (FindNextFileW(search.get(), &found) != FALSE);
    EXPECT_EQ(std::count(names.begin(), names.end(), L"Morvane.lnk"), 1);
    EXPECT_EQ(names.size(), 3U);  // "." and ".." are listed too
}

TEST_F(SwitchesTest, InstallingReplacesAnyFileOfThatName) {
    ASSERT_TRUE(WriteFileBytes(StartupShortcut(), "no shortcut at all"));
    EXPECT_EQ(RunProgram(L"--install-startup"), 0U);
    EXPECT_TRUE(ReadShortcut(StartupShortcut()).has_value());
}

TEST_F(SwitchesTest, RemovingAMissingShortcutSucceeds) {
    EXPECT_EQ(RunProgram(L"--remove-STARTUP"), 0U);
    EXPECT_FALSE(PathExists(StartupShortcut()));
}

TEST_F(SwitchesTest, InstallingFailsWithoutAStartupFolder) {
    const ShellFolderOverride away(L"Startup", L"Q:\\nowhere");
    EXPECT_EQ(RunProgram(L"--install-startup"), 2U);
}

TEST_F(SwitchesTest, RemovingTheShortcutSucceedsWithoutAStartupFolder) {
    const ShellFolderOverride away(L"Startup", L"Q:\\nowhere");
    EXPECT_EQ(RunProgram(L"--remove-startup"), 0U);
}

TEST_F(SwitchesTest, StartupSwitchesNeverTouchTheDataFolder) {
    EXPECT_EQ(RunProgram(L"--install-startup"), 0U);
    EXPECT_EQ(RunProgram(L"--remove-startup"), 0U);
    EXPECT_FALSE(PathExists(DataFolder()));
}

TEST_F(SwitchesTest, SwitchesShowNoTrayIcon) {
    const TrayRecorder recorder;
    for (const wchar_t* arguments : {L"--install-startup", L"--remove-startup", L"--remove-data"}) {
        EXPECT_EQ(RunProgram(arguments), 0U);
    }
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(SwitchesTest, EverythingElseStartsTheProgram) {
    struct Case {
        const char* name;
        const wchar_t* arguments;
    };
    constexpr Case Cases[] = {
        {"no arguments", L""},
        {"blanks", L"   "},
        {"unknown switch", L"--help"},
        {"one dash", L"-install-startup"},
        {"part of a switch", L"--install"},
        {"switch with a space inside", L"--remove- data"},
        {"letter that matches only in other locales", L"--\x0131nstall-startup"},
        {"a long line",
         L"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"},
    };
    for (const Case& item : Cases) {
        const Program program(item.arguments);
        EXPECT_NE(program.WaitForControlWindow(), nullptr) << item.name;
        EXPECT_FALSE(PathExists(StartupShortcut())) << item.name;
        EXPECT_EQ(program.ExitByCommand(), 0U) << item.name;
    }
}

}  // namespace
}  // namespace morvane::test
