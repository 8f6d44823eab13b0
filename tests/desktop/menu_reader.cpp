#include "desktop/menu_reader.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "desktop/canvas.h"
#include "support/window_state.h"
#include "ui/menu_rows.h"

namespace morvane::test {
namespace {

constexpr UINT GetMenuMessage = 0x01E1;  // MN_GETHMENU

// Told by the colour of the mark, the only sign of the state in a row.
std::wstring DrawnState(ULONG_PTR itemData) {
    const Canvas canvas(40, 20);
    DRAWITEMSTRUCT draw{};
    draw.CtlType = ODT_MENU;
    draw.itemData = itemData;
    draw.hDC = canvas.Context();
    draw.rcItem = {0, 0, 40, 20};
    if (!DrawPinItem(draw)) {
        return L"unknown";
    }
    const bool check = !canvas.PointsOf(0x004AA316).empty();
    const bool arrow = !canvas.PointsOf(0x00B46325).empty();
    if (check && arrow) {
        return L"both";
    }
    if (check) {
        return L"pinned";
    }
    return arrow ? L"sized" : L"free";
}

}  // namespace

std::wstring ItemText(HMENU menu, UINT item, UINT flag) {
    std::array<wchar_t, 1024> text{};
    const int length = GetMenuStringW(menu, item, text.data(), static_cast<int>(text.size()), flag);
    return {text.data(), static_cast<std::size_t>(length > 0 ? length : 0)};
}

std::wstring RowLine(UINT id, std::size_t itemData, std::wstring_view state,
                     std::wstring_view text) {
    std::wstring line = std::to_wstring(id) + L" row " + std::to_wstring(itemData) + L" ";
    return line.append(state).append(L": ").append(text);
}

std::wstring DescribedItem(HMENU menu, int position) {
    MENUITEMINFOW info{};
    info.cbSize = sizeof(info);
    info.fMask = MIIM_FTYPE | MIIM_ID | MIIM_STATE | MIIM_SUBMENU | MIIM_DATA;
    if (GetMenuItemInfoW(menu, static_cast<UINT>(position), TRUE, &info) == FALSE) {
        return L"no such item";
    }
    if ((info.fType & MFT_SEPARATOR) != 0) {
        return L"-";
    }
    const std::wstring text = ItemText(menu, static_cast<UINT>(position), MF_BYPOSITION);
    std::wstring states;
    if ((info.fState & MFS_CHECKED) != 0) {
        states += L" checked";
    }
    if ((info.fState & MFS_GRAYED) != 0) {
        states += L" grayed";
    }
    if (info.hSubMenu != nullptr) {
        return L">" + states + L" " + text;
    }
    if ((info.fType & MFT_OWNERDRAW) != 0) {
        return RowLine(info.wID, info.dwItemData, DrawnState(info.dwItemData) + states, text);
    }
    return std::to_wstring(info.wID) + states + L": " + text;
}

std::vector<std::wstring> DescribedMenu(HMENU menu) {
    std::vector<std::wstring> lines;
    const int count = std::max(GetMenuItemCount(menu), 0);
    lines.reserve(static_cast<std::size_t>(count));
    for (int position = 0; position < count; ++position) {
        lines.push_back(DescribedItem(menu, position));
    }
    return lines;
}

std::vector<HWND> OpenMenuWindows() {
    return VisibleWindowsOfClass(L"#32768", GetCurrentProcessId());
}

HMENU MenuOfWindow(HWND menuWindow) {
    return reinterpret_cast<HMENU>(SendMessageW(menuWindow, GetMenuMessage, 0, 0));
}

}  // namespace morvane::test
