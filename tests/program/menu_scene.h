#pragma once

#include <string>
#include <vector>

#include "base/win.h"
#include "program/scene.h"
#include "support/user_input.h"

// The tray menu and the About dialog as the user meets them: opened by a click, operated with the
// pointer or the arrow keys, read from the screen. Where the system does not tell the items of
// another process's menu, as under Wine 8.0, their places are computed from the menu's height and
// the order of the rows, with the margin and the separators that Wine draws.
namespace morvane::test {

inline constexpr WORD AboutCommand = 1009;

// The menu's selectable items, from the top.
enum class Item {
    AlwaysOnTop,
    AddRemove,
    AddRemoveMinSize,
    OpenSettings,
    ApplyNow,
    StartWithWindows,
    About,
    Exit,
};

enum class Way { Mouse, Keyboard };

// A row of a submenu: its place and the number of rows without the separator. In the submenu of
// minimum sizes the active window's row has place 0.
struct Row {
    Item submenu = Item::AddRemove;
    int place = 0;
    int count = 0;
};

// The title's current row; fails the test if it has none.
[[nodiscard]] Row AddRemoveRow(std::wstring_view title);
[[nodiscard]] Row MinSizeRow(std::wstring_view title);
[[nodiscard]] Row ActiveWindowRow();

// The program's open menus, highest first: submenus before the menu, except while a pass is raising
// them.
[[nodiscard]] std::vector<HWND> MenuWindows(const Program& program);
[[nodiscard]] bool MenuCloses(const Program& program);

// These return the menu's window; null if none appears. The first clicks the icon. The second does
// what the taskbar does then, with the pointer in the middle of the screen: it needs no taskbar,
// and the foreground window stays in front until the menu is built.
[[nodiscard]] HWND OpenMenuByIcon(const Program& program, MouseButton button = MouseButton::Left);
[[nodiscard]] HWND OpenMenu(const Program& program);

// The item's area in screen pixels; the menu must be open.
[[nodiscard]] RECT ItemRect(HWND menu, Item item);
[[nodiscard]] RECT RowRect(HWND submenu, const Row& row);
[[nodiscard]] POINT CentreOf(const RECT& rect);

// Opens a submenu of the open menu and returns its window; null if none appears.
[[nodiscard]] HWND OpenSubmenu(const Program& program, Item submenu, Way way);

// Selects a row by the arrow keys, in its submenu opened by them.
void SelectRow(const Row& row);

// Choose from an open menu. False if something does not appear or the menu stays open.
[[nodiscard]] bool Choose(const Program& program, Item item, Way way);
[[nodiscard]] bool Choose(const Program& program, const Row& row, Way way);

// Opens the menu first.
[[nodiscard]] bool OpenAndChoose(const Program& program, Item item, Way way);
[[nodiscard]] bool OpenAndChoose(const Program& program, const Row& row, Way way);

// Dismisses the open menu and its submenus.
[[nodiscard]] bool DismissMenu(const Program& program);

[[nodiscard]] bool FileBecomes(const std::string& content);

// The open dialog, or null.
[[nodiscard]] HWND AboutDialog(const Program& program);

// Wait until it is open and in its place; null if it does not appear. The first opens it by its
// command.
[[nodiscard]] HWND OpenAbout(const Program& program);
[[nodiscard]] HWND OpenedAbout(const Program& program);
[[nodiscard]] bool AboutCloses(const Program& program);

// The text of a control of the dialog, read from the control itself.
[[nodiscard]] std::wstring ControlText(HWND dialog, int id);

// The version that the program was built as.
[[nodiscard]] std::wstring BuiltVersion();

inline constexpr int AboutBodyId = 100;
inline constexpr int AboutCloseId = 101;

}  // namespace morvane::test
