// The language of everything the program says, and what chooses it.

#include <algorithm>
#include <iterator>

#include "program/menu_scene.h"

namespace morvane::test {
namespace {

using LanguageTest = ProgramTest;

struct Texts {
    const wchar_t* code;
    WORD language;
    const wchar_t* shortcut;  // its description
    const wchar_t* balloon;   // of a window that cannot be measured
    const wchar_t* about;     // the dialog's title
    const wchar_t* version;
    const wchar_t* close;
};

constexpr Texts AllTexts[] = {
    {L"en", LANG_ENGLISH, L"Keep selected windows always on top",
     L"Could not read this window's size.", L"About Morvane", L"Version: ", L"Close"},
    {L"zh-cn", LANG_CHINESE, L"将指定窗口固定在其他窗口之上", L"无法读取该窗口的大小。",
     L"关于 Morvane", L"版本: ", L"关闭"},
    {L"zh-tw", LANG_CHINESE, L"將指定視窗固定在其他視窗之上", L"無法讀取該視窗的大小。",
     L"關於 Morvane", L"版本: ", L"關閉"},
    {L"ja", LANG_JAPANESE, L"選んだウィンドウを、ほかより手前に固定",
     L"このウィンドウのサイズを取得できませんでした。", L"Morvane について", L"バージョン: ",
     L"閉じる"},
    {L"ko", LANG_KOREAN, L"지정한 창을 다른 창보다 항상 앞에 둡니다",
     L"창 크기를 읽을 수 없습니다.", L"Morvane 정보", L"버전: ", L"닫기"},
    {L"es", LANG_SPANISH, L"Mantiene las ventanas elegidas siempre por encima",
     L"No se pudo leer el tamaño de esta ventana.", L"Acerca de Morvane", L"Versión: ", L"Cerrar"},
    {L"fr", LANG_FRENCH, L"Maintient les fenêtres choisies au-dessus des autres",
     L"Impossible de lire la taille de cette fenêtre.", L"À propos de Morvane", L"Version : ",
     L"Fermer"},
    {L"de", LANG_GERMAN, L"Hält ausgewählte Fenster über allen anderen",
     L"Größe dieses Fensters konnte nicht gelesen werden.", L"Über Morvane", L"Version: ",
     L"Schließen"},
    {L"pt", LANG_PORTUGUESE, L"Mantém as janelas escolhidas sempre acima das demais",
     L"Não foi possível ler o tamanho desta janela.", L"Sobre o Morvane", L"Versão: ", L"Fechar"},
    {L"ru", LANG_RUSSIAN, L"Выбранные окна остаются поверх остальных",
     L"Не удалось определить размер окна.", L"О программе Morvane", L"Версия: ", L"Закрыть"},
};
constexpr const Texts& English = AllTexts[0];
constexpr const Texts& Traditional = AllTexts[2];
constexpr const Texts& Japanese = AllTexts[3];

void ExpectEverythingIn(const Texts& texts, const std::optional<std::wstring>& variable) {
    SCOPED_TRACE(testing::PrintToString(variable));
    EmptyStartupFolder();
    const TrayRecorder recorder;
    const Program program(L"", {{L"MORVANE_LANG", variable}});
    ASSERT_NE(program.WaitForControlWindow(), nullptr);
    EXPECT_EQ(recorder.Calls().front().tip, L"Morvane");
    EXPECT_EQ(WindowTitle(program.ControlWindow()), L"Morvane");
    EXPECT_TRUE(program.SendCommand(MinSizeActiveCommand));
    ExpectBalloon(recorder, texts.balloon, NIIF_WARNING);
    ASSERT_TRUE(program.SendCommand(StartWithWindowsCommand));
    const Shortcut shortcut = ReadShortcut(StartupShortcut()).value_or(Shortcut{});
    EXPECT_EQ(shortcut.description, texts.shortcut);
    const HWND dialog = OpenAbout(program);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(WindowTitle(dialog), texts.about);
    EXPECT_EQ(ControlText(dialog, AboutBodyId),
              std::wstring(L"Morvane\n\n") + texts.version + L"26.9.12.2157");
    EXPECT_EQ(ControlText(dialog, AboutCloseId), texts.close);
    EXPECT_EQ(program.ExitByCommand(), 0U);
}

TEST_F(LanguageTest, EnvironmentVariableChoosesTheLanguage) {
    for (const Texts& texts : AllTexts) {
        ExpectEverythingIn(texts, texts.code);
    }
    ExpectEverythingIn(Japanese, L"JA-JP");
    ExpectEverythingIn(English, L"it");
    ExpectEverythingIn(English, L"ja-jp-and-more-units");
}

// Run in two sessions; the one with another display language names it.
TEST_F(LanguageTest, ProgramSpeaksTheSystemsDisplayLanguage) {
    const LANGID system = GetUserDefaultUILanguage();
    const std::optional<std::wstring> named = EnvironmentVariable(L"MORVANE_TEST_DISPLAY_LANGUAGE");
    ASSERT_EQ(named.value_or(std::to_wstring(system)), std::to_wstring(system));
    const WORD country = SUBLANGID(system);
    const bool traditional = country == SUBLANG_CHINESE_TRADITIONAL ||
                             country == SUBLANG_CHINESE_HONGKONG ||
                             country == SUBLANG_CHINESE_MACAU;
    const auto* const found = std::ranges::find(AllTexts, PRIMARYLANGID(system), &Texts::language);
    const Texts& spoken = found == std::end(AllTexts) ? English : *found;
    const bool chinese = spoken.language == LANG_CHINESE;
    ExpectEverythingIn(chinese && traditional ? Traditional : spoken, std::nullopt);
}

}  // namespace
}  // namespace morvane::test
