#include "program/menu_scene.h"

#include <array>
#include <optional>

#include "support/tray.h"

namespace morvane::test {
namespace {

constexpr POINT MenuSpot{500, 450};

// The margin around the items and the height of a separator, where the items are not told.
constexpr LONG MenuMargin = 3;

LONG SeparatorHeight() {
    return GetSystemMetrics(SM_CYMENUSIZE) / 2;
}

struct PlaceInMenu {
    int itemsAbove;
    int separatorsAbove;
};

constexpr std::array<PlaceInMenu, 8> Places = {{
    {0, 0},
    {1, 1},
    {2, 1},
    {3, 2},
    {4, 2},
    {5, 2},
    {6, 3},
    {7, 4},
}};
constexpr int ItemCount = 8;
constexpr int SeparatorCount = 4;

struct Shape {
    int items;
    int separators;
};

// Nothing where the menu of another process is not told, as under Wine 8.0.
std::optional<RECT> ToldRect(HWND menu, const PlaceInMenu& place) {
    const auto position = static_cast<UINT>(place.itemsAbove + place.separatorsAbove);
    const LRESULT handle = Answer(menu, MN_GETHMENU, 0, 0).value_or(0);
    RECT rect{};
    return GetMenuItemRect(nullptr, reinterpret_cast<HMENU>(handle), position, &rect) != FALSE
               ? std::optional(rect)
               : std::nullopt;
}

// Otherwise every item of a menu has the same height.
RECT RectAt(HWND menu, const PlaceInMenu& place, const Shape& shape) {
    if (const std::optional<RECT> told = ToldRect(menu, place)) {
        return *told;
    }
    const RECT frame = WindowRect(menu);
    const LONG height =
        (frame.bottom - frame.top - 2 * MenuMargin - shape.separators * SeparatorHeight()) /
        shape.items;
    const LONG top = frame.top + MenuMargin + place.itemsAbove * height +
                     place.separatorsAbove * SeparatorHeight();
    return {frame.left + MenuMargin, top, frame.right - MenuMargin, top + height};
}

bool IsMinSize(Item submenu) {
    return submenu == Item::AddRemoveMinSize;
}

// A menu is on the screen before its program listens to the mouse wherever it is, and off the
// screen before the program can open the next one.
bool IsInMenuMode(const Program& program) {
    GUITHREADINFO info{};
    info.cbSize = sizeof(info);
    return GetGUIThreadInfo(GetWindowThreadProcessId(program.ControlWindow(), nullptr), &info) !=
               FALSE &&
           (info.flags & GUI_INMENUMODE) != 0;
}

HWND WaitForMenu(const Program& program) {
    std::vector<HWND> menus;
    const bool came = WaitUntil([&] {
        menus = MenuWindows(program);
        return menus.size() == 1 && WindowSize(menus.front()).cy > 2 * MenuMargin &&
               IsInMenuMode(program);
    });
    return came ? menus.front() : nullptr;
}

void TapKeys(WORD virtualKey, int times) {
    for (int i = 0; i < times; ++i) {
        TapKey(virtualKey);
    }
}

// Arrow keys move from the selected item; a menu just opened has none.
void MoveSelectionTo(Item item) {
    TapKeys(VK_DOWN, static_cast<int>(item) + 1);
}

bool FailedBecause(const char* reason) {
    ADD_FAILURE() << reason;
    return false;
}

int PlaceOf(std::wstring_view title) {
    const int place = RowOfTitle(title);
    EXPECT_GE(place, 0) << "no such row";
    return place;
}

}  // namespace

Row AddRemoveRow(std::wstring_view title) {
    return {Item::AddRemove, PlaceOf(title), static_cast<int>(RowTitles().size())};
}

Row MinSizeRow(std::wstring_view title) {
    return {Item::AddRemoveMinSize, PlaceOf(title) + 1, static_cast<int>(RowTitles().size()) + 1};
}

Row ActiveWindowRow() {
    return {Item::AddRemoveMinSize, 0, static_cast<int>(RowTitles().size()) + 1};
}

std::vector<HWND> MenuWindows(const Program& program) {
    return VisibleWindowsOfClass(L"#32768", program.ProcessId());
}

bool MenuCloses(const Program& program) {
    return WaitUntil([&] { return MenuWindows(program).empty() && !IsInMenuMode(program); });
}

HWND OpenMenuByIcon(const Program& program, MouseButton button) {
    Click(WaitForTrayIcon(program.ControlWindow()), button);
    return WaitForMenu(program);
}

HWND OpenMenu(const Program& program) {
    MovePointer(MenuSpot);
    PostMessageW(program.ControlWindow(), TrayMessage, 1, WM_LBUTTONUP);
    return WaitForMenu(program);
}

RECT ItemRect(HWND menu, Item item) {
    return RectAt(menu, Places.at(static_cast<std::size_t>(item)), {ItemCount, SeparatorCount});
}

RECT RowRect(HWND submenu, const Row& row) {
    const int separators = IsMinSize(row.submenu) ? 1 : 0;
    return RectAt(submenu, {row.place, row.place > 0 ? separators : 0}, {row.count, separators});
}

POINT CentreOf(const RECT& rect) {
    return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

HWND OpenSubmenu(const Program& program, Item submenu, Way way) {
    const std::vector<HWND> menus = MenuWindows(program);
    if (menus.size() != 1) {
        return nullptr;
    }
    const HWND menu = menus.front();
    if (way == Way::Mouse) {
        const POINT at = CentreOf(ItemRect(menu, submenu));
        // Starts slightly to the side, as a menu notices the pointer only when it moves.
        MovePointer({at.x - 3, at.y});
        MovePointer(at);
    } else {
        MoveSelectionTo(submenu);
        TapKey(VK_RIGHT);
    }
    // Identified by its handle: while a pass raises the menus one by one, either can be the
    // highest.
    HWND opened = nullptr;
    static_cast<void>(WaitUntil([&] {
        for (const HWND window : MenuWindows(program)) {
            if (window != menu && WindowSize(window).cy > 2 * MenuMargin) {
                opened = window;
            }
        }
        return opened != nullptr;
    }));
    return opened;
}

void SelectRow(const Row& row) {
    // The submenu opens with its first row selected.
    TapKeys(VK_DOWN, row.place);
}

bool Choose(const Program& program, Item item, Way way) {
    const std::vector<HWND> menus = MenuWindows(program);
    if (menus.size() != 1) {
        return FailedBecause("no single menu to choose from");
    }
    if (way == Way::Mouse) {
        Click(CentreOf(ItemRect(menus.front(), item)), MouseButton::Left);
    } else {
        MoveSelectionTo(item);
        TapKey(VK_RETURN);
    }
    return MenuCloses(program) || FailedBecause("the menu stays open after the choice");
}

bool Choose(const Program& program, const Row& row, Way way) {
    const HWND submenu = OpenSubmenu(program, row.submenu, way);
    if (submenu == nullptr) {
        return FailedBecause("no submenu to choose from");
    }
    if (way == Way::Mouse) {
        Click(CentreOf(RowRect(submenu, row)), MouseButton::Left);
    } else {
        SelectRow(row);
        TapKey(VK_RETURN);
    }
    return MenuCloses(program) || FailedBecause("the menu stays open after the choice");
}

bool OpenAndChoose(const Program& program, Item item, Way way) {
    return (OpenMenu(program) != nullptr || FailedBecause("no menu")) && Choose(program, item, way);
}

bool OpenAndChoose(const Program& program, const Row& row, Way way) {
    return (OpenMenu(program) != nullptr || FailedBecause("no menu")) && Choose(program, row, way);
}

bool DismissMenu(const Program& program) {
    for (std::size_t open = MenuWindows(program).size(); open > 0; --open) {
        TapKey(VK_ESCAPE);
        if (!WaitUntil([&] { return MenuWindows(program).size() < open; })) {
            return false;
        }
    }
    return MenuCloses(program);
}

bool FileBecomes(const std::string& content) {
    return WaitUntil([&] { return ReadSettings() == content; });
}

HWND AboutDialog(const Program& program) {
    return HighestWindowOfClass(L"MorvaneAboutDialog", program.ProcessId());
}

HWND OpenAbout(const Program& program) {
    return program.PostCommand(AboutCommand) ? OpenedAbout(program) : nullptr;
}

HWND OpenedAbout(const Program& program) {
    // The owner is disabled only after the dialog is laid out and placed.
    const bool opened = WaitUntil([&] {
        return AboutDialog(program) != nullptr && IsWindowEnabled(program.ControlWindow()) == FALSE;
    });
    return opened ? AboutDialog(program) : nullptr;
}

bool AboutCloses(const Program& program) {
    return WaitUntil([&] {
        return AboutDialog(program) == nullptr && IsWindowEnabled(program.ControlWindow()) != FALSE;
    });
}

std::wstring ControlText(HWND dialog, int id) {
    std::wstring text(256, L'\0');
    DWORD_PTR length = 0;
    if (SendMessageTimeoutW(GetDlgItem(dialog, id), WM_GETTEXT, text.size(),
                            reinterpret_cast<LPARAM>(text.data()), SMTO_NORMAL,
                            static_cast<UINT>(DefaultTimeout.count()), &length) == 0) {
        return L"(no answer)";
    }
    text.resize(length);
    return text;
}

std::wstring BuiltVersion() {
    return EnvironmentVariable(L"MORVANE_TEST_VERSION").value_or(L"(not set)");
}

}  // namespace morvane::test
