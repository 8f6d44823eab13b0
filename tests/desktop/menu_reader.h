#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/win.h"
#include "pin/identity.h"

namespace morvane::test {

// The text of the item with that id (MF_BYCOMMAND) or at that position (MF_BYPOSITION); empty if
// there is no such item.
[[nodiscard]] std::wstring ItemText(HMENU menu, UINT item, UINT flag);

// One item in words, for readable failures:
//   "-"                          a separator
//   "> Text"                     a submenu
//   "1002: Text"                 a plain item; also "1002 checked: Text", "0 grayed: Text"
//   "2500 row 1 pinned: Text"    an owner-drawn row with its item data and the state of its mark:
//                                "free", "pinned" or "sized"
[[nodiscard]] std::wstring DescribedItem(HMENU menu, int position);

// All items of a menu.
[[nodiscard]] std::vector<std::wstring> DescribedMenu(HMENU menu);

// An owner-drawn row in the words above.
[[nodiscard]] std::wstring RowLine(UINT id, std::size_t itemData, std::wstring_view state,
                                   std::wstring_view text);

// This process's open menus, topmost first.
[[nodiscard]] std::vector<HWND> OpenMenuWindows();

// The menu shown in a menu window.
[[nodiscard]] HMENU MenuOfWindow(HWND menuWindow);

}  // namespace morvane::test
