// The program's language, told by the shortcut's description and the balloons.

#include "program/faulty_scene.h"
#include "support/languages.h"

namespace morvane::test {
namespace {

using LanguageTest = FaultyProgramTest;

// After a run with a switch that adds the shortcut.
std::wstring DescriptionAfter(std::optional<DWORD> exitCode) {
    const std::wstring description =
        ReadShortcut(StartupShortcut()).value_or(Shortcut{}).description;
    EmptyStartupFolder();
    return exitCode == 0U ? description : L"(not installed)";
}

TEST_F(LanguageTest, EnvironmentVariableBeforeTheDisplayLanguageChoosesTheLanguage) {
    constexpr LANGID UnitedStates = 0x0409;
    constexpr LANGID Japan = 0x0411;
    constexpr LANGID HongKong = 0x0C04;
    struct Case {
        LANGID displayLanguage;
        std::optional<std::wstring> variable;
        Language language;
    };
    const Case cases[] = {
        {UnitedStates, {}, Language::English},
        {Japan, {}, Language::Japanese},
        {Japan, L"", Language::Japanese},
        {HongKong, {}, Language::ChineseTraditional},
        {UnitedStates, L"zh-cn", Language::ChineseSimplified},
        {HongKong, L"ko-kr", Language::Korean},
        {UnitedStates, L"ES", Language::Spanish},
        {UnitedStates, L"fr", Language::French},
        {Japan, L"de-DE", Language::German},
        {UnitedStates, L"pt-br", Language::PortugueseBrazil},
        {Japan, L"ru", Language::Russian},
        {Japan, L"it", Language::English},
        {Japan, L"ja-jp-and-more-units", Language::English},
    };
    for (const Case& item : cases) {
        const std::string plan = "GetUserDefaultUILanguage=" + std::to_string(item.displayLanguage);
        EXPECT_EQ(DescriptionAfter(RunFaultyProgram(plan, L"--install-startup",
                                                    {{L"MORVANE_LANG", item.variable}})),
                  ExpectedText(StrAppDescription, item.language))
            << plan << ' ' << testing::PrintToString(item.variable);
    }
}

// Run in two sessions; the one with another display language names it.
TEST_F(LanguageTest, ProgramSpeaksTheSystemsDisplayLanguage) {
    const LANGID system = GetUserDefaultUILanguage();
    const std::optional<std::wstring> named = EnvironmentVariable(L"MORVANE_TEST_DISPLAY_LANGUAGE");
    ASSERT_EQ(named.value_or(std::to_wstring(system)), std::to_wstring(system));
    EXPECT_EQ(DescriptionAfter(RunProgram(L"--install-startup", {{L"MORVANE_LANG", std::nullopt}})),
              ExpectedText(StrAppDescription, ExpectedLanguage(system)))
        << system;
}

TEST_F(LanguageTest, BalloonsAreInTheChosenLanguage) {
    for (const auto& [language, code, longCode] : AllLanguages) {
        const TrayRecorder recorder;
        const Program program = StartedProgram({{L"MORVANE_LANG", code}});
        EXPECT_TRUE(program.SendCommand(MinSizeActiveCommand));
        const TrayCall balloon = WaitForBalloon(recorder);
        EXPECT_EQ(balloon.info, ExpectedText(StrSizeUnreadable, language));
        EXPECT_EQ(balloon.infoTitle, L"Morvane");
        EXPECT_EQ(recorder.Calls().front().tip, L"Morvane");
        EXPECT_EQ(WindowTitle(program.ControlWindow()), L"Morvane");
        EXPECT_EQ(program.ExitByCommand(), 0U);
    }
}

TEST_F(LanguageTest, ShortcutKeepsTheLanguageInWhichItWasMade) {
    ASSERT_EQ(RunProgram(L"--install-startup", {{L"MORVANE_LANG", L"de"}}), 0U);
    const Program program = StartedProgram({{L"MORVANE_LANG", L"fr"}});
    EXPECT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_EQ(ReadShortcut(StartupShortcut()).value_or(Shortcut{}).description,
              ExpectedText(StrAppDescription, Language::German));
}

}  // namespace
}  // namespace morvane::test
