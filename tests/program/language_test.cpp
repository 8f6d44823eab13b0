// The language of everything the program says, and what chooses it.

#include "program/menu_scene.h"
#include "support/languages.h"

namespace morvane::test {
namespace {

using LanguageTest = ProgramTest;

void ExpectEverythingIn(Language language, const std::optional<std::wstring>& variable) {
    SCOPED_TRACE(testing::PrintToString(variable));
    EmptyStartupFolder();
    const TrayRecorder recorder;
    const Program program(L"", {{L"MORVANE_LANG", variable}});
    ASSERT_NE(program.WaitForControlWindow(), nullptr);
    ASSERT_FALSE(recorder.Calls().empty());
    EXPECT_EQ(recorder.Calls().front().tip, L"Morvane");
    EXPECT_EQ(WindowTitle(program.ControlWindow()), L"Morvane");
    EXPECT_TRUE(program.SendCommand(MinSizeActiveCommand));
    ExpectBalloon(recorder, ExpectedText(StrSizeUnreadable, language), NIIF_WARNING);
    ASSERT_TRUE(program.SendCommand(StartWithWindowsCommand));
    const Shortcut shortcut = ReadShortcut(StartupShortcut()).value_or(Shortcut{});
    EXPECT_EQ(shortcut.description, ExpectedText(StrAppDescription, language));
    const HWND dialog = OpenAbout(program);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(WindowTitle(dialog), ExpectedText(StrAboutTitle, language));
    EXPECT_EQ(ControlText(dialog, AboutBodyId),
              L"Morvane\n\n" + ExpectedFormat(StrAboutVersion, BuiltVersion(), language));
    EXPECT_EQ(ControlText(dialog, AboutCloseId), ExpectedText(StrClose, language));
    EXPECT_EQ(program.ExitByCommand(), 0U);
}

TEST_F(LanguageTest, EnvironmentVariableChoosesTheLanguage) {
    for (const auto& [language, code, longCode] : AllLanguages) {
        ExpectEverythingIn(language, code);
    }
    ExpectEverythingIn(Language::Japanese, L"JA-JP");
    ExpectEverythingIn(Language::English, L"it");
    ExpectEverythingIn(Language::English, L"ja-jp-and-more-units");
}

// Run in two sessions; the one with another display language names it.
TEST_F(LanguageTest, ProgramSpeaksTheSystemsDisplayLanguage) {
    const LANGID system = GetUserDefaultUILanguage();
    const std::optional<std::wstring> named = EnvironmentVariable(L"MORVANE_TEST_DISPLAY_LANGUAGE");
    ASSERT_EQ(named.value_or(std::to_wstring(system)), std::to_wstring(system));
    ExpectEverythingIn(ExpectedLanguage(system), std::nullopt);
}

}  // namespace
}  // namespace morvane::test
