#pragma once

#include <string>

#include "base/win.h"
#include "ui/theme.h"

namespace morvane {

// What an About dialog is created with, as its creation parameter; it has to live as long as the
// dialog.
struct AboutDialogState {
    DialogTheme theme;
    std::wstring body;
};

// Shows the About dialog and returns when it has been closed. An About dialog that is open already
// is brought to the front instead.
void ShowAboutDialog(HWND owner);

// Puts an open dialog above all other windows again, after a pass has raised pinned ones. Does
// nothing when none is open.
void RaiseAboutDialog();

}  // namespace morvane
