#pragma once

// The owner-drawn rows of the tray menu: their records, their measuring and their painting.

#include <string>
#include <string_view>

#include "base/win.h"
#include "pin/identity.h"

namespace morvane {

// A title as a row shows it: at most 80 units, a longer one ends in "...".
[[nodiscard]] std::wstring TruncateForMenu(std::wstring_view text);

// Appends a row to a menu. Its record lives until ClearMenuRows.
void AppendPinItem(HMENU menu, UINT id, std::wstring_view text, PinState state);

// Empties the records. Not while a menu is open: its rows would be blank.
void ClearMenuRows();

// Fills in a row's size (pixels). False when the message is not about one of our rows.
[[nodiscard]] bool MeasurePinItem(HWND controlWindow, MEASUREITEMSTRUCT& measure);

// Paints a row. False when the message is not about one of our rows.
[[nodiscard]] bool DrawPinItem(const DRAWITEMSTRUCT& draw);

}  // namespace morvane
