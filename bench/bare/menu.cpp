#include <array>

#include "bare/loops.h"
#include "base/gui_owners.h"
#include "pin/window_query.h"

namespace morvane::bare {
namespace {

constexpr std::size_t MaxRows = 500;
constexpr int TitleCapacity = 512;
constexpr int ClassCapacity = 256;
constexpr int OtherItems = 10;

// Titles are kept: they are the row texts. The rest of each buffer is never touched.
struct Row {
    HWND window;
    wchar_t title[TitleCapacity];
};

// Too large for the stack.
std::array<Row, MaxRows> rows;

std::size_t AskCandidates() {
    std::size_t count = 0;
    wchar_t className[ClassCapacity];
    ForEachTopLevelWindow([&](HWND window) {
        if (count == rows.size() || IsWindowVisible(window) == FALSE ||
            GetWindow(window, GW_OWNER) != nullptr) {
            return;
        }
        GetClassNameW(window, className, ClassCapacity);
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

void AppendRow(const Menu& menu, wchar_t* text) {
    AppendMenuW(menu.get(), MF_OWNERDRAW, 1, text);
    MENUITEMINFOW info{};
    info.cbSize = sizeof(info);
    info.fMask = MIIM_STRING;
    info.dwTypeData = text;
    SetMenuItemInfoW(menu.get(), static_cast<UINT>(GetMenuItemCount(menu.get()) - 1), TRUE, &info);
}

// One row per title; the second list begins with another row and asks for each size.
Menu BuildList(std::size_t count, bool sized) {
    Menu menu(CreatePopupMenu());
    if (sized) {
        AppendRow(menu, rows[0].title);
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

unsigned BuildMenuOnce() {
    const std::size_t count = AskCandidates();
    const Menu menu(CreatePopupMenu());
    for (int item = 0; item < OtherItems; ++item) {
        AppendMenuW(menu.get(), MF_STRING, 1, L"An item of the menu");
    }
    unsigned appended = 0;
    for (const bool sized : {false, true}) {
        Menu list = BuildList(count, sized);
        appended += static_cast<unsigned>(GetMenuItemCount(list.get()));
        AppendMenuW(menu.get(), MF_POPUP, reinterpret_cast<UINT_PTR>(list.release()),
                    L"A list of windows");
    }
    return appended;
}

}  // namespace morvane::bare
