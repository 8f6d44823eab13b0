// The program's language, told by the shortcut's description and the balloons.

#include <map>

#include "program/faulty_scene.h"

namespace morvane::test {
namespace {

using LanguageTest = FaultyProgramTest;

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

// After a run with a switch that adds the shortcut.
std::wstring DescriptionAfter(std::optional<DWORD> exitCode) {
    const std::wstring description =
        ReadShortcut(StartupShortcut()).value_or(Shortcut{}).description;
    EmptyStartupFolder();
    return exitCode == 0U ? description : L"(not installed)";
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
        EXPECT_EQ(
            DescriptionAfter(RunProgram(L"--install-startup", {{L"MORVANE_LANG", item.code}})),
            item.description)
            << '"' << testing::PrintToString(std::wstring(item.code)) << '"';
    }
}

TEST_F(LanguageTest, DisplayLanguageIsTheDefault) {
    struct Case {
        LANGID displayLanguage;
        std::optional<std::wstring> variable;
        const wchar_t* description;
    };
    const Case cases[] = {
        {0x0409, {}, English},      // United States
        {0x0411, {}, Japanese},     // Japan
        {0x0804, {}, Simplified},   // PRC
        {0x1004, {}, Simplified},   // Singapore
        {0x0404, {}, Traditional},  // Taiwan
        {0x0C04, {}, Traditional},  // Hong Kong SAR
        {0x0412, {}, Korean},       // Korea
        {0x080A, {}, Spanish},      // Mexico
        {0x0C0C, {}, French},       // Canada
        {0x0C07, {}, German},       // Austria
        {0x0816, {}, Portuguese},   // Portugal
        {0x0419, {}, Russian},      // Russia
        {0x0410, {}, English},      // Italian
        {0x0411, L"it", English},  {0x0411, L"de", German}, {0x0411, L"", Japanese},
    };
    for (const Case& item : cases) {
        const std::string plan = "GetUserDefaultUILanguage=" + std::to_string(item.displayLanguage);
        EXPECT_EQ(DescriptionAfter(RunFaultyProgram(plan, L"--install-startup",
                                                    {{L"MORVANE_LANG", item.variable}})),
                  item.description)
            << plan << ' ' << testing::PrintToString(item.variable);
    }
}

// Run in two sessions; the one with another display language names it.
TEST_F(LanguageTest, ProgramSpeaksTheSystemsDisplayLanguage) {
    const std::map<WORD, const wchar_t*> descriptions = {
        {LANG_JAPANESE, Japanese}, {LANG_KOREAN, Korean}, {LANG_SPANISH, Spanish},
        {LANG_FRENCH, French},     {LANG_GERMAN, German}, {LANG_PORTUGUESE, Portuguese},
        {LANG_RUSSIAN, Russian},
    };
    const LANGID system = GetUserDefaultUILanguage();
    const std::optional<std::wstring> named = EnvironmentVariable(L"MORVANE_TEST_DISPLAY_LANGUAGE");
    ASSERT_EQ(named.value_or(std::to_wstring(system)), std::to_wstring(system));
    const WORD country = SUBLANGID(system);
    const bool traditional = country == SUBLANG_CHINESE_TRADITIONAL ||
                             country == SUBLANG_CHINESE_HONGKONG ||
                             country == SUBLANG_CHINESE_MACAU;
    const auto found = descriptions.find(PRIMARYLANGID(system));
    const wchar_t* const chinese = traditional ? Traditional : Simplified;
    const wchar_t* const others = found == descriptions.end() ? English : found->second;
    EXPECT_EQ(DescriptionAfter(RunProgram(L"--install-startup", {{L"MORVANE_LANG", std::nullopt}})),
              PRIMARYLANGID(system) == LANG_CHINESE ? chinese : others)
        << system;
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
