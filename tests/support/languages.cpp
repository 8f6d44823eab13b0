#include "support/languages.h"

#include <algorithm>
#include <map>

#include "base/win.h"

namespace morvane::test {
namespace {

// In the order of AllLanguages.
struct ExpectedRow {
    StringId id;
    std::array<const wchar_t*, LanguageCount> texts;
};

constexpr ExpectedRow Rows[] = {
    {StrAppName,
     {L"Morvane", L"Morvane", L"Morvane", L"Morvane", L"Morvane", L"Morvane", L"Morvane",
      L"Morvane", L"Morvane", L"Morvane"}},
    {StrAppDescription,
     {L"Keep selected windows always on top", L"選んだウィンドウを、ほかより手前に固定",
      L"将指定窗口固定在其他窗口之上", L"將指定視窗固定在其他視窗之上",
      L"지정한 창을 다른 창보다 항상 앞에 둡니다",
      L"Mantiene las ventanas elegidas siempre por encima",
      L"Maintient les fenêtres choisies au-dessus des autres",
      L"Hält ausgewählte Fenster über allen anderen",
      L"Mantém as janelas escolhidas sempre acima das demais",
      L"Выбранные окна остаются поверх остальных"}},
    {StrAlwaysOnTop,
     {L"Always on top", L"常に手前に固定", L"固定在最前", L"固定在最前", L"항상 맨 앞에 고정",
      L"Siempre encima", L"Toujours au premier plan", L"Immer im Vordergrund", L"Sempre no topo",
      L"Поверх всех окон"}},
    {StrAddRemove,
     {L"Add / Remove", L"追加と削除", L"添加/移除窗口", L"新增/移除視窗", L"창 추가·제거",
      L"Añadir o quitar ventanas", L"Ajouter ou retirer des fenêtres",
      L"Fenster hinzufügen/entfernen", L"Adicionar ou remover janelas",
      L"Добавить или убрать окно"}},
    {StrAddRemoveMinSize,
     {L"Add / Remove (min size)", L"追加と削除（下限指定）", L"添加/移除（最小尺寸）",
      L"新增/移除（最小尺寸）", L"창 추가·제거(최소 크기)", L"Añadir o quitar (tamaño mínimo)",
      L"Ajouter ou retirer (taille min.)", L"Hinzufügen/entfernen (Mindestgröße)",
      L"Adicionar ou remover (tamanho mín.)", L"Добавить/убрать (мин. размер)"}},
    {StrOpenSettings,
     {L"Open settings", L"設定を開く", L"打开配置文件", L"開啟設定檔", L"설정 파일 열기",
      L"Abrir configuración", L"Ouvrir le fichier de paramètres", L"Konfigurationsdatei öffnen",
      L"Abrir arquivo de configuração", L"Открыть файл настроек"}},
    {StrApplyNow,
     {L"Apply now", L"今すぐ適用", L"重新加载设置", L"重新載入設定", L"설정 다시 불러오기",
      L"Recargar ajustes", L"Recharger les paramètres", L"Einstellungen neu laden",
      L"Recarregar configurações", L"Применить настройки"}},
    {StrExit,
     {L"Exit", L"終了", L"退出", L"結束", L"종료", L"Salir", L"Quitter", L"Beenden", L"Sair",
      L"Выход"}},
    {StrNoWindows,
     {L"(No windows)", L"（対象ウィンドウなし）", L"（没有可登记的窗口）", L"（沒有可登記的視窗）",
      L"(등록할 창 없음)", L"(No hay ventanas)", L"(Aucune fenêtre)", L"(Keine Fenster)",
      L"(Nenhuma janela)", L"(Нет окон)"}},
    {StrNoActiveWindow,
     {L"(No active window)", L"（前面のウィンドウなし）", L"（当前没有活动窗口）",
      L"（目前沒有使用中視窗）", L"(활성 창 없음)", L"(Sin ventana activa)",
      L"(Aucune fenêtre active)", L"(Kein aktives Fenster)", L"(Nenhuma janela ativa)",
      L"(Нет активного окна)"}},
    {StrActivePrefix,
     {L"Active: ", L"前面のウィンドウ: ", L"当前窗口: ", L"目前視窗: ", L"활성 창: ",
      L"Ventana activa: ", L"Fenêtre active : ", L"Aktives Fenster: ", L"Janela ativa: ",
      L"Активное окно: "}},
    {StrSizeUnreadable,
     {L"Could not read this window's size.", L"このウィンドウのサイズを取得できませんでした。",
      L"无法读取该窗口的大小。", L"無法讀取該視窗的大小。", L"창 크기를 읽을 수 없습니다.",
      L"No se pudo leer el tamaño de esta ventana.",
      L"Impossible de lire la taille de cette fenêtre.",
      L"Größe dieses Fensters konnte nicht gelesen werden.",
      L"Não foi possível ler o tamanho desta janela.", L"Не удалось определить размер окна."}},
    {StrTitleUnreadable,
     {L"Could not read this window's title.", L"このウィンドウのタイトルを取得できませんでした。",
      L"无法读取该窗口的标题。", L"無法讀取該視窗的標題。", L"창 제목을 읽을 수 없습니다.",
      L"No se pudo leer el título de esta ventana.",
      L"Impossible de lire le titre de cette fenêtre.",
      L"Titel dieses Fensters konnte nicht gelesen werden.",
      L"Não foi possível ler o título desta janela.", L"Не удалось прочитать заголовок окна."}},
    {StrLimitReached,
     {L"Can't add more windows (limit reached).", L"これ以上ウィンドウを登録できません。",
      L"已达登记上限，无法继续添加。", L"已達登記上限，無法繼續新增。",
      L"더 이상 등록할 수 없습니다(한도 도달).",
      L"No se pueden añadir más ventanas (límite alcanzado).",
      L"Impossible d'ajouter d'autres fenêtres (limite atteinte).",
      L"Es können keine weiteren Fenster eingetragen werden (Limit erreicht).",
      L"Não é possível adicionar mais janelas (limite atingido).",
      L"Достигнут лимит — больше окон добавить нельзя."}},
    {StrMinSizeSet,
     {L"Minimum size set to {0}.", L"最小サイズを {0} に設定しました。", L"最小尺寸已设为 {0}。",
      L"最小尺寸已設為 {0}。", L"최소 크기를 {0}(으)로 지정했습니다.",
      L"Tamaño mínimo fijado en {0}.", L"Taille minimale fixée à {0}.",
      L"Mindestgröße auf {0} festgelegt.", L"Tamanho mínimo definido como {0}.",
      L"Минимальный размер: {0}."}},
    {StrAbout,
     {L"About", L"バージョン情報", L"关于本软件", L"關於本軟體", L"버전 정보", L"Acerca de",
      L"À propos", L"Programminfo", L"Sobre", L"О программе"}},
    {StrStartWithWindows,
     {L"Start with Windows", L"Windows 起動時に実行", L"登录 Windows 时自动启动",
      L"登入 Windows 時自動啟動", L"Windows 시작 시 실행", L"Iniciar con Windows",
      L"Lancer au démarrage de Windows", L"Mit Windows starten", L"Iniciar com o Windows",
      L"Запускать с Windows"}},
    {StrStartupEnabled,
     {L"Morvane will start when you sign in to Windows.",
      L"ログオン時に Morvane が自動起動するようにしました。",
      L"已设为登录 Windows 时自动启动 Morvane。", L"已設為登入 Windows 時自動啟動 Morvane。",
      L"Windows 로그온 시 Morvane가 자동으로 실행됩니다.",
      L"Morvane se iniciará al iniciar sesión en Windows.",
      L"Morvane démarrera à votre connexion Windows.",
      L"Morvane startet bei der Windows-Anmeldung automatisch.",
      L"O Morvane será iniciado ao entrar no Windows.",
      L"Morvane будет запускаться при входе в Windows."}},
    {StrStartupDisabled,
     {L"Morvane will no longer start with Windows.", L"ログオン時の自動起動を解除しました。",
      L"已取消登录 Windows 时自动启动。", L"已取消登入 Windows 時自動啟動。",
      L"Windows 로그온 시 자동 실행을 해제했습니다.", L"Morvane ya no se iniciará con Windows.",
      L"Morvane ne démarrera plus avec Windows.",
      L"Automatischer Start mit Windows wurde deaktiviert.",
      L"O Morvane não iniciará mais com o Windows.", L"Автозапуск Morvane с Windows отключён."}},
    {StrStartupFailed,
     {L"Could not change the Windows startup setting.",
      L"ログオン時の自動起動設定を変更できませんでした。", L"无法更改“登录时自动启动”的设置。",
      L"無法變更「登入時自動啟動」的設定。", L"Windows 시작 설정을 변경할 수 없습니다.",
      L"No se pudo cambiar el inicio con Windows.",
      L"Impossible de modifier le démarrage avec Windows.",
      L"Autostart-Einstellung konnte nicht geändert werden.",
      L"Não foi possível alterar o início com o Windows.",
      L"Не удалось изменить параметры автозапуска."}},
    {StrAboutTitle,
     {L"About Morvane", L"Morvane について", L"关于 Morvane", L"關於 Morvane", L"Morvane 정보",
      L"Acerca de Morvane", L"À propos de Morvane", L"Über Morvane", L"Sobre o Morvane",
      L"О программе Morvane"}},
    {StrAboutVersion,
     {L"Version: {0}", L"バージョン: {0}", L"版本: {0}", L"版本: {0}", L"버전: {0}",
      L"Versión: {0}", L"Version : {0}", L"Version: {0}", L"Versão: {0}", L"Версия: {0}"}},
    {StrClose,
     {L"Close", L"閉じる", L"关闭", L"關閉", L"닫기", L"Cerrar", L"Fermer", L"Schließen", L"Fechar",
      L"Закрыть"}},
};

}  // namespace

const wchar_t* ExpectedText(StringId id, Language language) {
    const auto* const row = std::ranges::find(Rows, id, &ExpectedRow::id);
    const auto* const column =
        std::ranges::find(AllLanguages, language, &InterfaceLanguage::language);
    const bool found = row != std::end(Rows) && column != AllLanguages.end();
    return found ? row->texts[static_cast<std::size_t>(column - AllLanguages.begin())]
                 : L"(no text)";
}

std::wstring ExpectedFormat(StringId id, std::wstring_view argument, Language language) {
    constexpr std::wstring_view Placeholder = L"{0}";
    std::wstring text = ExpectedText(id, language);
    return text.replace(text.find(Placeholder), Placeholder.size(), argument);
}

Language ExpectedLanguage(std::uint16_t displayLanguage) {
    constexpr int PrimaryLanguage = 0x3FF;
    static const std::map<int, Language> languages = {
        {0x04, Language::ChineseSimplified},
        {0x07, Language::German},
        {0x0A, Language::Spanish},
        {0x0C, Language::French},
        {0x11, Language::Japanese},
        {0x12, Language::Korean},
        {0x16, Language::PortugueseBrazil},
        {0x19, Language::Russian},
        {0x0404, Language::ChineseTraditional},  // Taiwan
        {0x0C04, Language::ChineseTraditional},  // Hong Kong SAR
        {0x1404, Language::ChineseTraditional},  // Macao SAR
    };
    for (const int identifier : {int{displayLanguage}, displayLanguage & PrimaryLanguage}) {
        if (const auto found = languages.find(identifier); found != languages.end()) {
            return found->second;
        }
    }
    return Language::English;
}

void ChooseLanguage(const wchar_t* code) {
    SetEnvironmentVariableW(L"MORVANE_LANG", code);
    InitLanguage();
    SetEnvironmentVariableW(L"MORVANE_LANG", nullptr);
}

}  // namespace morvane::test
