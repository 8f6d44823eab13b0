#include "ui/menu_rows.h"

#include <cstddef>
#include <string>
#include <vector>

#include "base/gui_owners.h"
#include "settings/text.h"
#include "ui/theme.h"

namespace morvane {
namespace {

constexpr std::size_t MaxRowLength = 80;  // UTF-16 code units

constexpr COLORREF CheckColour = RGB(22, 163, 74);
constexpr COLORREF ArrowColour = RGB(37, 99, 180);
constexpr wchar_t MarlettCheckMark[] = L"a";
constexpr int MarkPoints = 10;
constexpr int RowPaddingX = 8;  // pixels
constexpr int RowPaddingY = 4;  // pixels

struct MenuItemRecord {
    std::wstring text;
    PinState state = PinState::NotPinned;
};

// Filled while a menu is open. A row's item data is the record's 1-based position; 0 is no row.
std::vector<MenuItemRecord> menuItemRecords;

const MenuItemRecord* FindRecord(UINT controlType, ULONG_PTR itemData) {
    if (controlType != ODT_MENU || itemData < 1 || itemData > menuItemRecords.size()) {
        return nullptr;
    }
    return &menuItemRecords[itemData - 1];
}

// The font of a row, bold for a pinned one.
Font CreateRowFont(PinState state) {
    LOGFONTW font{};
    GetObjectW(GetStockObject(DEFAULT_GUI_FONT), sizeof(font), &font);
    if (state != PinState::NotPinned) {
        font.lfWeight = FW_BOLD;
    }
    return Font(CreateFontIndirectW(&font));
}

Font CreateMarkFont(HDC dc) {
    LOGFONTW font{};
    font.lfHeight = FontHeight(MarkPoints, dc);
    font.lfWeight = FW_NORMAL;
    font.lfCharSet = SYMBOL_CHARSET;
    lstrcpynW(font.lfFaceName, L"Marlett", LF_FACESIZE);
    return Font(CreateFontIndirectW(&font));
}

// The rectangle is a copy because DrawTextW takes it as in/out.
void DrawRowText(HDC dc, std::wstring_view text, RECT area, UINT format) {
    DrawTextW(dc, text.data(), static_cast<int>(text.size()), &area, format);
}

void DrawCheckMark(HDC dc, const RECT& column) {
    const Font font = CreateMarkFont(dc);
    const SelectGuard selected(dc, font.get());
    SetTextColor(dc, CheckColour);
    DrawRowText(dc, MarlettCheckMark, column, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
}

void DrawLine(HDC dc, POINT from, POINT to) {
    MoveToEx(dc, from.x, from.y, nullptr);
    LineTo(dc, to.x, to.y);
}

// An upward arrow over a base line with a short post at its left. LineTo leaves each end point out.
void DrawSizeArrow(HDC dc, const RECT& item, int columnWidth) {
    const Pen pen(CreatePen(PS_SOLID, 1, ArrowColour));
    const SelectGuard selected(dc, pen.get());
    const LONG x = item.left + columnWidth / 2;
    const LONG y = (item.top + item.bottom) / 2;
    DrawLine(dc, {x - 5, y + 3}, {x + 5, y + 3});
    DrawLine(dc, {x - 5, y + 3}, {x - 5, y - 2});
    DrawLine(dc, {x, y - 5}, {x, y});
    DrawLine(dc, {x - 2, y - 2}, {x, y - 5});
    LineTo(dc, x + 2, y - 2);
}

void DrawMark(HDC dc, const RECT& item, int columnWidth, PinState state) {
    RECT column = item;
    column.right = column.left + columnWidth;
    if (state == PinState::Pinned) {
        DrawCheckMark(dc, column);
    } else if (state == PinState::PinnedWithMinSize) {
        DrawSizeArrow(dc, item, columnWidth);
    }
}

// Screen readers need the string: an owner-drawn item has none of its own.
void AttachString(HMENU menu, std::wstring text) {
    MENUITEMINFOW info{};
    info.cbSize = sizeof(info);
    info.fMask = MIIM_STRING;
    info.dwTypeData = text.data();
    SetMenuItemInfoW(menu, static_cast<UINT>(GetMenuItemCount(menu) - 1), TRUE, &info);
}

}  // namespace

std::wstring TruncateForMenu(std::wstring_view text) {
    return TruncateWithEllipsis(text, MaxRowLength);
}

void AppendPinItem(HMENU menu, UINT id, std::wstring_view text, PinState state) {
    menuItemRecords.push_back({TruncateForMenu(text), state});
    // AppendMenuW takes the item data of an owner-drawn item in place of its text.
    const auto* const itemData = reinterpret_cast<const wchar_t*>(menuItemRecords.size());
    if (AppendMenuW(menu, MF_OWNERDRAW, id, itemData) != FALSE) {
        AttachString(menu, menuItemRecords.back().text);
    }
}

void ClearMenuRows() {
    menuItemRecords.clear();
}

bool MeasurePinItem(HWND controlWindow, MEASUREITEMSTRUCT& measure) {
    const MenuItemRecord* const record = FindRecord(measure.CtlType, measure.itemData);
    if (record == nullptr) {
        return false;
    }
    const WindowDc dc(controlWindow);
    if (!dc) {
        return false;
    }
    const Font font = CreateRowFont(record->state);
    const SelectGuard selected(dc.get(), font.get());
    SIZE size{};
    GetTextExtentPoint32W(dc.get(), record->text.c_str(), static_cast<int>(record->text.size()),
                          &size);
    measure.itemWidth = static_cast<UINT>(GetSystemMetrics(SM_CXMENUCHECK) + size.cx + RowPaddingX);
    measure.itemHeight = static_cast<UINT>(size.cy + RowPaddingY);
    return true;
}

// In the system's menu colours even in the dark theme, to match the items that the system draws.
bool DrawPinItem(const DRAWITEMSTRUCT& draw) {
    const MenuItemRecord* const record = FindRecord(draw.CtlType, draw.itemData);
    if (record == nullptr) {
        return false;
    }
    const HDC dc = draw.hDC;
    const bool selected = (draw.itemState & ODS_SELECTED) != 0;
    FillRect(dc, &draw.rcItem, GetSysColorBrush(selected ? COLOR_HIGHLIGHT : COLOR_MENU));
    SetBkMode(dc, TRANSPARENT);

    const int columnWidth = GetSystemMetrics(SM_CXMENUCHECK);
    DrawMark(dc, draw.rcItem, columnWidth, record->state);

    SetTextColor(dc, GetSysColor(selected ? COLOR_HIGHLIGHTTEXT : COLOR_MENUTEXT));
    const Font font = CreateRowFont(record->state);
    const SelectGuard selectedFont(dc, font.get());
    RECT textArea = draw.rcItem;
    textArea.left += columnWidth;
    // No DT_NOPREFIX: "&" in a title underlines the next letter, as in the system's own items.
    DrawRowText(dc, record->text, textArea, DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_END_ELLIPSIS);
    return true;
}

}  // namespace morvane
