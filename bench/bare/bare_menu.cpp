#include "bare/bare_menu.h"

#include <array>
#include <cstddef>

#include "bare/bare_pass.h"
#include "base/gui_owners.h"
#include "base/owners.h"
#include "base/win_shell.h"

namespace morvane::bare {

namespace {

constexpr std::size_t MaxRows = 500;
constexpr int TitleCapacity = 512;
constexpr int ClassCapacity = 256;
constexpr std::size_t FileCapacity = 16384;

// Titles are kept: they are the row texts. The rest of each buffer is never touched.
struct Row {
    HWND window;
    wchar_t title[TitleCapacity];
};

struct RowList {
    std::array<Row, MaxRows> rows;
    std::size_t count;
};

// Too large for the stack.
RowList rowList;

void AskClass(HWND window) {
    wchar_t className[ClassCapacity];
    GetClassNameW(window, className, ClassCapacity);
}

BOOL CALLBACK AskCandidate(HWND window, LPARAM parameter) {
    auto& list = *reinterpret_cast<RowList*>(parameter);
    if (list.count == list.rows.size() || IsWindowVisible(window) == FALSE ||
        GetWindow(window, GW_OWNER) != nullptr) {
        return TRUE;
    }
    AskClass(window);
    Row& row = list.rows[list.count];
    row.window = window;
    if (GetWindowTextW(window, row.title, TitleCapacity) > 0) {
        ++list.count;
    }
    return TRUE;
}

void AskSize(HWND window) {
    RECT frame;
    if (IsWindow(window) != FALSE && IsIconic(window) == FALSE) {
        GetWindowRect(window, &frame);
    }
}

void AskActive(HWND window) {
    if (IsWindowVisible(window) != FALSE) {
        AskClass(window);
        AskSize(window);
    }
}

void AppendRow(HMENU menu, UINT id, wchar_t* text) {
    AppendMenuW(menu, MF_OWNERDRAW, id, text);
    MENUITEMINFOW info{};
    info.cbSize = sizeof(info);
    info.fMask = MIIM_STRING;
    info.dwTypeData = text;
    SetMenuItemInfoW(menu, static_cast<UINT>(GetMenuItemCount(menu) - 1), TRUE, &info);
}

// One row per title; the second list also asks for the size of each window.
Menu BuildRows(bool sized, HWND active) {
    Menu menu(CreatePopupMenu());
    if (sized) {
        wchar_t title[TitleCapacity];
        AskActive(active);
        AskSize(active);
        GetWindowTextW(active, title, TitleCapacity);
        AppendRow(menu.get(), 1, title);
        AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
    }
    UINT id = 2;
    for (std::size_t index = 0; index < rowList.count; ++index) {
        if (sized) {
            AskSize(rowList.rows[index].window);
        }
        AppendRow(menu.get(), id, rowList.rows[index].title);
        ++id;
    }
    return menu;
}

void AskFolders(const wchar_t* dataFolder) {
    std::array<wchar_t, MAX_PATH> folder{};
    SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder.data());
    CreateDirectoryW(dataFolder, nullptr);
    static_cast<void>(GetFileAttributesW(dataFolder));
}

void AskStartup(const wchar_t* anyFile) {
    PWSTR text = nullptr;
    SHGetKnownFolderPath(FOLDERID_Startup, 0, nullptr, &text);
    const ShellText owned(text);
    static_cast<void>(GetFileAttributesW(anyFile));
}

}  // namespace

unsigned BuildMenuOnce(const wchar_t* settingsPath, const wchar_t* dataFolder) {
    std::array<char, FileCapacity> file;
    AskFolders(dataFolder);
    ReadFileOnce(settingsPath, file);
    rowList.count = 0;
    EnumWindows(AskCandidate, reinterpret_cast<LPARAM>(&rowList));
    const HWND active = GetForegroundWindow();
    AskActive(active);

    const Menu menu(CreatePopupMenu());
    constexpr int PlainItems = 6;
    constexpr int Separators = 4;
    for (int item = 0; item < PlainItems; ++item) {
        AppendMenuW(menu.get(), MF_STRING, 1, L"An item of the menu");
    }
    for (int item = 0; item < Separators; ++item) {
        AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
    }
    unsigned appended = 0;
    for (const bool sized : {false, true}) {
        Menu rows = BuildRows(sized, active);
        appended += static_cast<unsigned>(GetMenuItemCount(rows.get()));
        AppendMenuW(menu.get(), MF_POPUP, reinterpret_cast<UINT_PTR>(rows.release()),
                    L"A list of windows");
    }
    AskStartup(settingsPath);
    return appended;
}

}  // namespace morvane::bare
