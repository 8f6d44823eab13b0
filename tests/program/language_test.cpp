// The program's language, told by the shortcut's description and the balloons.

#include "program/scene.h"
#include "support/child_process.h"
#include "support/unix_command.h"

namespace morvane::test {
namespace {

using LanguageTest = ProgramTest;

constexpr const wchar_t* English = L"Keep selected windows always on top";
constexpr const wchar_t* Japanese = L"選んだウィンドウを、ほかより手前に固定";
constexpr const wchar_t* Simplified = L"将指定窗口固定在其他窗口之上";
constexpr const wchar_t* Traditional = L"將指定視窗固定在其他視窗之上";
constexpr const wchar_t* Korean = L"지정한 창을 다른 창보다 항상 앞에 둡니다";
constexpr const wchar_t* Spanish = L"Mantiene las ventanas elegidas siempre por encima";
constexpr const wchar_t* French = L"Maintient les fenêtres choisies au-dessus des autres";
constexpr const wchar_t* German = L"Hält ausgewählte Fenster über allen anderen";
constexpr const wchar_t* Portuguese = L"Mantém as janelas escolhidas sempre acima das demais";
constexpr const wchar_t* Russian = L"Выбранные окна остаются поверх остальных";

std::wstring InstalledDescription(const Environment& changes) {
    EmptyStartupFolder();
    if (RunProgram(L"--install-startup", changes) != 0U) {
        return L"(not installed)";
    }
    return ReadShortcut(StartupShortcut()).value_or(Shortcut{}).description;
}

TEST_F(LanguageTest, EnvironmentVariableChoosesTheLanguage) {
    struct Case {
        const wchar_t* code;
        const wchar_t* description;
    };
    constexpr Case Cases[] = {
        {L"en", English},
        {L"EN-us", English},
        {L"ja", Japanese},
        {L"JA-JP", Japanese},
        {L"Ja", Japanese},
        {L"zh-cn", Simplified},
        {L"ZH-TW", Traditional},
        {L"ko", Korean},
        {L"ko-kr", Korean},
        {L"es", Spanish},
        {L"es-ES", Spanish},
        {L"fr", French},
        {L"fr-fr", French},
        {L"de", German},
        {L"de-DE", German},
        {L"pt", Portuguese},
        {L"pt-br", Portuguese},
        {L"ru", Russian},
        {L"ru-ru", Russian},
        {L"zh", English},
        {L"ja_jp", English},
        {L" ja", English},
        {L"ja-jp ", English},
        {L"ja-jp-x", English},
        {L"es-mx", English},
        {L"it", English},
        {L"123456789012345", English},
        {L"ja-jp-and-more-units", English},
    };
    for (const Case& item : Cases) {
        EXPECT_EQ(InstalledDescription({{L"MORVANE_LANG", item.code}}), item.description)
            << '"' << testing::PrintToString(std::wstring(item.code)) << '"';
    }
}

// Under Wine the display language is the host process's locale, which a Windows program cannot pass
// on, so the host's shell starts the program.
std::wstring DescriptionInLocale(const char* locale, const std::string& variables) {
    EmptyStartupFolder();
    const std::string line = std::string("LC_ALL=") + locale + " " + variables + " wine " +
                             QuotedForShell(UnixPath(RequiredPath(L"MORVANE_TEST_PROGRAM"))) +
                             " --install-startup";
    const UnixResult result = RunUnix(line);
    if (result.exitCode != 0) {
        return L"(not installed)";
    }
    return ReadShortcut(StartupShortcut()).value_or(Shortcut{}).description;
}

TEST_F(LanguageTest, DisplayLanguageIsTheDefault) {
    struct Case {
        const char* locale;
        const char* variables;
        const wchar_t* description;
    };
    constexpr Case Cases[] = {
        {"en_US.UTF-8", "", English},
        {"ja_JP.UTF-8", "", Japanese},
        {"zh_CN.UTF-8", "", Simplified},
        {"zh_SG.UTF-8", "", Simplified},
        {"zh_TW.UTF-8", "", Traditional},
        {"zh_HK.UTF-8", "", Traditional},
        {"ko_KR.UTF-8", "", Korean},
        {"es_MX.UTF-8", "", Spanish},
        {"fr_CA.UTF-8", "", French},
        {"de_AT.UTF-8", "", German},
        {"pt_PT.UTF-8", "", Portuguese},
        {"ru_RU.UTF-8", "", Russian},
        {"it_IT.UTF-8", "", English},
        {"ja_JP.UTF-8", "MORVANE_LANG=it", English},
        {"ja_JP.UTF-8", "MORVANE_LANG=de", German},
        {"ja_JP.UTF-8", "MORVANE_LANG=", Japanese},
    };
    for (const Case& item : Cases) {
        EXPECT_EQ(DescriptionInLocale(item.locale, item.variables), item.description)
            << item.locale << ' ' << item.variables;
    }
}

TEST_F(LanguageTest, BalloonsAreInTheChosenLanguage) {
    struct Case {
        const wchar_t* code;
        const wchar_t* text;
    };
    constexpr Case Cases[] = {
        {L"en", L"Could not read this window's size."},
        {L"ja", L"このウィンドウのサイズを取得できませんでした。"},
        {L"zh-cn", L"无法读取该窗口的大小。"},
        {L"zh-tw", L"無法讀取該視窗的大小。"},
        {L"ko", L"창 크기를 읽을 수 없습니다."},
        {L"es", L"No se pudo leer el tamaño de esta ventana."},
        {L"fr", L"Impossible de lire la taille de cette fenêtre."},
        {L"de", L"Größe dieses Fensters konnte nicht gelesen werden."},
        {L"pt", L"Não foi possível ler o tamanho desta janela."},
        {L"ru", L"Не удалось определить размер окна."},
    };
    for (const Case& item : Cases) {
        const TrayRecorder recorder;
        const Program program = StartedProgram({{L"MORVANE_LANG", item.code}});
        EXPECT_TRUE(program.SendCommand(MinSizeActiveCommand));
        const TrayCall balloon = WaitForBalloon(recorder);
        EXPECT_EQ(balloon.info, item.text);
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
    EXPECT_EQ(ReadShortcut(StartupShortcut()).value_or(Shortcut{}).description, German);
}

}  // namespace
}  // namespace morvane::test
