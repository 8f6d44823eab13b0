#include <array>

#include "bare/loops.h"
#include "base/gui_owners.h"
#include "base/owners.h"
#include "base/win_shell.h"
#include "pin/window_query.h"

namespace morvane::bare {
namespace {

constexpr std::size_t MaxRows = 500;
constexpr int TitleCapacity = 512;
constexpr int ClassCapacity = 256;
constexpr std::size_t FileCapacity = 16384;
constexpr int PlainItems = 6;
constexpr int Separators = 4;

// Titles are kept: they are the row texts. The rest of each buffer is never touched.
struct Row {
    HWND window;
    wchar_t title[TitleCapacity];
};

// Too large for the stack.
std::array<Row, MaxRows> rows;

void AskClass(HWND window) {
    wchar_t className[ClassCapacity];
    GetClassNameW(window, className, ClassCapacity);
}

std::size_t AskCandidates() {
    std::size_t count = 0;
    ForEachTopLevelWindow([&](HWND window) {
        if (count == rows.size() || IsWindowVisible(window) == FALSE ||
            GetWindow(window, GW_OWNER) != nullptr) {
            return;
        }
        AskClass(window);
        rows[count].window = window;
        if (GetWindowTextW(window, rows[count].title, TitleCapacity) > 0) {
            ++count;
        }
    });
    return count;
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

void AppendRow(const Menu& menu, wchar_t* text) {
    AppendMenuW(menu.get(), MF_OWNERDRAW, 1, text);
    MENUITEMINFOW info{};
    info.cbSize = sizeof(info);
    info.fMask = MIIM_STRING;
    info.dwTypeData = text;
    SetMenuItemInfoW(menu.get(), static_cast<UINT>(GetMenuItemCount(menu.get()) - 1), TRUE, &info);
}

// One row per title; the second list begins with the active window and asks for each size.
Menu BuildList(std::size_t count, bool sized, HWND active) {
    Menu menu(CreatePopupMenu());
    if (sized) {
        wchar_t title[TitleCapacity];
        AskActive(active);
        AskSize(active);
        GetWindowTextW(active, title, TitleCapacity);
        AppendRow(menu, title);
        AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
    }
    for (std::size_t row = 0; row < count; ++row) {
        if (sized) {
            AskSize(rows[row].window);
        }
        AppendRow(menu, rows[row].title);
    }
    return menu;
}

}  // namespace

unsigned BuildMenuOnce(const wchar_t* settingsPath, const wchar_t* dataFolder) {
    std::array<wchar_t, MAX_PATH> folder{};
    SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder.data());
    CreateDirectoryW(dataFolder, nullptr);
    static_cast<void>(GetFileAttributesW(dataFolder));
    std::array<char, FileCapacity> file;
    ReadFileOnce(settingsPath, file);
    const std::size_t count = AskCandidates();
    const HWND active = GetForegroundWindow();
    AskActive(active);

    const Menu menu(CreatePopupMenu());
    for (int item = 0; item < PlainItems; ++item) {
        AppendMenuW(menu.get(), MF_STRING, 1, L"An item of the menu");
    }
    for (int item = 0; item < Separators; ++item) {
        AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
    }
    unsigned appended = 0;
    for (const bool sized : {false, true}) {
        Menu list = BuildList(count, sized, active);
        appended += static_cast<unsigned>(GetMenuItemCount(list.get()));
        AppendMenuW(menu.get(), MF_POPUP, reinterpret_cast<UINT_PTR>(list.release()),
                    L"A list of windows");
    }
    ShellText startup;
    SHGetKnownFolderPath(FOLDERID_Startup, 0, nullptr, startup.put());
    static_cast<void>(GetFileAttributesW(settingsPath));
    return appended;
}

}  // namespace morvane::bare
