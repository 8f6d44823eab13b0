#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/win.h"
#include "pin/identity.h"

namespace morvane::test {

// The text of the item with that id (MF_BYCOMMAND) or at that place (MF_BYPOSITION); empty when
// there is none.
[[nodiscard]] std::wstring ItemText(HMENU menu, UINT item, UINT flag);

// One item in words, so that a failing comparison can be read:
//   "-"                          a separator
//   "> Text"                     a submenu
//   "1002: Text"                 a plain item; also "1002 checked: Text", "0 grayed: Text"
//   "2500 row 1 pinned: Text"    an owner-drawn row with its item data and what its mark shows:
//                                "free", "pinned" or "sized"
[[nodiscard]] std::wstring DescribedItem(HMENU menu, int position);

// All items of a menu.
[[nodiscard]] std::vector<std::wstring> DescribedMenu(HMENU menu);

// A row's line as above.
[[nodiscard]] std::wstring RowLine(UINT id, std::size_t itemData, std::wstring_view state,
                                   std::wstring_view text);

// Open menus of the calling thread, highest first.
[[nodiscard]] std::vector<HWND> OpenMenuWindows();

// The menu that an open menu's window shows.
[[nodiscard]] HMENU MenuOfWindow(HWND menuWindow);

}  // namespace morvane::test
