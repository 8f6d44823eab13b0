// What the program does with a switch, and what counts as one.

#include "program/scene.h"

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
    {"install after data removal", L"--remove-data --install-startup", Effect::Installs},
    {"startup removal", L"--remove-startup", Effect::RemovesShortcut},
    {"startup removal after data removal", L"--remove-data --remove-startup",
     Effect::RemovesShortcut},
    {"data removal", L"--remove-data", Effect::RemovesData},
    {"data removal in quotes, partly in upper case", L"\"x --REMOVE-data\"", Effect::RemovesData},
};

TEST_F(SwitchesTest, OnlyTheFirstSwitchInTheFixedOrderActs) {
    for (const SwitchCase& item : SwitchCases) {
        SCOPED_TRACE(item.name);
        ResetProfile();
        WriteSettings("kept\n");
        // Installing replaces any file of that name.
        ASSERT_TRUE(WriteFileBytes(StartupShortcut(), "no shortcut at all"));
        EXPECT_EQ(RunProgram(item.arguments), 0U);
        EXPECT_EQ(ReadShortcut(StartupShortcut()).has_value(), item.effect == Effect::Installs);
        EXPECT_EQ(PathExists(StartupShortcut()), item.effect == Effect::Installs);
        EXPECT_EQ(PathExists(DataFolder()), item.effect != Effect::RemovesData);
        EXPECT_EQ(PathExists(SettingsPath()), item.effect != Effect::RemovesData);
    }
}

TEST_F(SwitchesTest, ShortcutNamesTheProgram) {
    ASSERT_EQ(RunProgram(L"--install-startup"), 0U);
    const Shortcut shortcut = ReadShortcut(StartupShortcut()).value_or(Shortcut{});
    EXPECT_EQ(CompareStringOrdinal(shortcut.target.c_str(), -1,
                                   RequiredPath(L"MORVANE_TEST_PROGRAM").c_str(), -1, TRUE),
              CSTR_EQUAL);
    EXPECT_EQ(shortcut.description, L"Keep selected windows always on top");
    EXPECT_EQ(shortcut.arguments, L"");
}

TEST_F(SwitchesTest, SwitchesShowNoTrayIconAndMakeNoDataFolder) {
    const TrayRecorder recorder;
    for (const wchar_t* arguments :
         {L"--install-startup", L"--install-startup", L"--remove-startup", L"--remove-startup",
          L"--remove-data", L"--remove-data"}) {
        EXPECT_EQ(RunProgram(arguments), 0U) << arguments;
        EXPECT_FALSE(PathExists(DataFolder())) << arguments;
    }
    EXPECT_FALSE(PathExists(StartupShortcut()));
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(SwitchesTest, EverythingElseStartsTheProgram) {
    for (const wchar_t* arguments :
         {L"   ", L"--help", L"-install-startup", L"--install", L"--remove- data",
          // A letter that matches only in other locales.
          L"--\x0131nstall-startup",
          L"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"}) {
        const Program program(arguments);
        EXPECT_NE(program.WaitForControlWindow(), nullptr) << arguments;
        EXPECT_FALSE(PathExists(StartupShortcut())) << arguments;
        EXPECT_EQ(program.ExitByCommand(), 0U) << arguments;
    }
}

}  // namespace
}  // namespace morvane::test
