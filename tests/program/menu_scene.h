#pragma once

#include <string>
#include <vector>

#include "base/win.h"
#include "program/scene.h"
#include "support/user_input.h"

// The tray menu and the About dialog as a user meets them: opened by a click, chosen from with the
// pointer or the arrow keys, read from the screen. Another process's menu tells nothing about its
// items, so their places follow from the menu's height and from the order of its rows.
namespace morvane::test {

inline constexpr WORD AboutCommand = 1009;

// The rows of the menu that can be chosen, from the top.
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
inline constexpr Way Ways[] = {Way::Mouse, Way::Keyboard};
[[nodiscard]] const char* NameOf(Way way);

// A row of a submenu: its place, and how many rows there are besides the separator. In the submenu
// of minimum sizes the active window's row has the place 0.
struct Row {
    Item submenu = Item::AddRemove;
    int place = 0;
    int count = 0;
};

// The row that a title has now; a failure of the running test when it has none.
[[nodiscard]] Row AddRemoveRow(std::wstring_view title);
[[nodiscard]] Row MinSizeRow(std::wstring_view title);
[[nodiscard]] Row ActiveWindowRow();

// Open menus of the program, the highest first: submenus before the menu, except for moments in
// which a pass is raising them.
[[nodiscard]] std::vector<HWND> MenuWindows(const Program& program);
[[nodiscard]] bool MenuCloses(const Program& program);

// These return the menu's window, or null when none comes. The first clicks the icon; the second
// does what the taskbar does then, with the pointer in the middle of the screen: it works without a
// taskbar, and the window in the foreground stays there until the menu is built.
[[nodiscard]] HWND OpenMenuByIcon(const Program& program, MouseButton button = MouseButton::Left);
[[nodiscard]] HWND OpenMenu(const Program& program);

// Where the item of an open menu is, in screen pixels.
[[nodiscard]] RECT ItemRect(HWND menu, Item item);
[[nodiscard]] RECT RowRect(HWND submenu, const Row& row);
[[nodiscard]] POINT CentreOf(const RECT& rect);

// Opens a submenu of the open menu; its window, or null when none comes.
[[nodiscard]] HWND OpenSubmenu(const Program& program, Item submenu, Way way);

// Choose from an open menu; false when something on the way does not appear, or when the menu stays
// open afterwards.
[[nodiscard]] bool Choose(const Program& program, Item item, Way way);
[[nodiscard]] bool Choose(const Program& program, const Row& row, Way way);

// Opens the menu first.
[[nodiscard]] bool OpenAndChoose(const Program& program, Item item, Way way);
[[nodiscard]] bool OpenAndChoose(const Program& program, const Row& row, Way way);

void TapKeys(WORD virtualKey, int times);

// Dismisses whatever menu is open, submenus included.
[[nodiscard]] bool DismissMenu(const Program& program);

[[nodiscard]] bool FileBecomes(const std::string& content);

// The dialog, or null when none is open.
[[nodiscard]] HWND AboutDialog(const Program& program);

// Opens it by the command; null when it does not come.
[[nodiscard]] HWND OpenAbout(const Program& program);
[[nodiscard]] bool AboutCloses(const Program& program);

// The text of a control of the dialog, asked of the control itself.
[[nodiscard]] std::wstring ControlText(HWND dialog, int id);

inline constexpr int AboutBodyId = 100;
inline constexpr int AboutCloseId = 101;

}  // namespace morvane::test
