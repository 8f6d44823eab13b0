#include "ui/menu_build.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/rect.h"
#include "i18n/strings.h"
#include "pin/candidates.h"
#include "pin/engine.h"
#include "pin/identity.h"
#include "pin/window_query.h"
#include "settings/text.h"
#include "shell/startup_shortcut.h"
#include "ui/active_window.h"
#include "ui/command_ids.h"
#include "ui/menu_rows.h"

namespace morvane {
namespace {

void AppendItem(const Menu& menu, StringId text, UINT id, bool checked = false) {
    AppendMenuW(menu.get(), MF_STRING | (checked ? UINT{MF_CHECKED} : UINT{MF_UNCHECKED}), id,
                GetText(text));
}

// Grayed and without an identifier, so that it never comes back as a command.
void AppendPlaceholder(const Menu& menu, StringId text) {
    AppendMenuW(menu.get(), MF_STRING | MF_GRAYED, 0, GetText(text));
}

void AppendSeparator(const Menu& menu) {
    AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
}

void AppendSubmenu(const Menu& menu, Menu submenu, StringId text) {
    if (submenu && AppendMenuW(menu.get(), MF_POPUP, reinterpret_cast<UINT_PTR>(submenu.get()),
                               GetText(text)) != FALSE) {
        // The menu destroys it from here on.
        static_cast<void>(submenu.release());
    }
}

UINT RowCount() {
    return static_cast<UINT>(std::min<std::size_t>(CandidateList().size(), MaxMenuWindows));
}

// The row is truncated afterwards: a long title loses its size, since the title is what tells
// windows apart.
std::wstring WithSize(std::wstring text, const RECT& frame) {
    return text.append(L" (").append(FormatSize(Width(frame), Height(frame))).append(L")");
}

void AppendActiveWindow(const Menu& menu) {
    const HWND window = ActiveWindow();
    const std::optional<RECT> frame =
        IsUsableActiveWindow(window) ? ReadMeasurableFrame(window) : std::nullopt;
    if (!frame) {
        AppendPlaceholder(menu, StrNoActiveWindow);
        return;
    }
    const WindowTitle title = ReadTitle(window);
    AppendPinItem(menu.get(), CmdMinSizeActive,
                  WithSize(std::wstring(GetText(StrActivePrefix)).append(title.View()), *frame),
                  PinStateForTitle(Engine().pinList, title.View()));
}

}  // namespace

Menu BuildTrayMenu() {
    Menu menu(CreatePopupMenu());
    if (!menu) {
        return menu;
    }
    AppendItem(menu, StrAlwaysOnTop, CmdAlwaysOnTop, Engine().pinList.pinning);
    AppendSeparator(menu);
    AppendSubmenu(menu, BuildAddRemoveMenu(), StrAddRemove);
    AppendSubmenu(menu, BuildMinSizeMenu(), StrAddRemoveMinSize);
    AppendSeparator(menu);
    AppendItem(menu, StrOpenSettings, CmdOpenSettings);
    AppendItem(menu, StrApplyNow, CmdApplyNow);
    AppendItem(menu, StrStartWithWindows, CmdStartWithWindows, IsStartupEnabled());
    AppendSeparator(menu);
    AppendItem(menu, StrAbout, CmdAbout);
    AppendSeparator(menu);
    AppendItem(menu, StrExit, CmdExit);
    return menu;
}

Menu BuildAddRemoveMenu() {
    Menu menu(CreatePopupMenu());
    if (!menu) {
        return menu;
    }
    const std::vector<CandidateWindow>& candidates = CandidateList();
    if (candidates.empty()) {
        AppendPlaceholder(menu, StrNoWindows);
        return menu;
    }
    // Every candidate, minimised or not, and no sign of a minimum size: here only pinned or not
    // pinned matters.
    for (UINT row = 0; row < RowCount(); ++row) {
        const std::wstring& title = candidates[row].title;
        const bool pinned = IsPinnedTitle(Engine().pinList, title);
        AppendPinItem(menu.get(), CmdTogglePinBase + row, title,
                      pinned ? PinState::Pinned : PinState::NotPinned);
    }
    return menu;
}

Menu BuildMinSizeMenu() {
    Menu menu(CreatePopupMenu());
    if (!menu) {
        return menu;
    }
    AppendActiveWindow(menu);
    AppendSeparator(menu);
    const std::vector<CandidateWindow>& candidates = CandidateList();
    if (candidates.empty()) {
        AppendPlaceholder(menu, StrNoWindows);
        return menu;
    }
    for (UINT row = 0; row < RowCount(); ++row) {
        const CandidateWindow& candidate = candidates[row];
        // A skipped window leaves a gap in the identifiers: a command looks up its window by row in
        // the candidate list.
        if (const std::optional<RECT> frame = ReadMeasurableFrame(candidate.window)) {
            AppendPinItem(menu.get(), CmdMinSizeBase + row, WithSize(candidate.title, *frame),
                          PinStateForTitle(Engine().pinList, candidate.title));
        }
    }
    return menu;
}

}  // namespace morvane
