#pragma once

#include <string>

#include "base/win.h"
#include "ui/theme.h"

namespace morvane {

// The creation parameter of an About dialog. Must outlive the dialog.
struct AboutDialogState {
    DialogTheme theme;
    std::wstring body;
};

// Shows the About dialog and returns when it is closed. If one is open already, brings it to the
// front instead.
void ShowAboutDialog(HWND owner);

// Puts an open dialog above the windows that a pass has raised. Does nothing when none is open.
void RaiseAboutDialog();

}  // namespace morvane
