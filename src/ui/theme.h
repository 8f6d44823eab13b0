#pragma once

// Fonts, and dialogs in the user's light or dark application theme. Every step is best effort:
// where the system lacks something, the dialog looks as the system draws it.

#include "base/gui_owners.h"
#include "base/win.h"

namespace morvane {

// One per open dialog, released with it.
struct DialogTheme {
    Font font;
    Brush brush;  // the background
    COLORREF textColour = 0;
};

// Light also when the setting cannot be read.
[[nodiscard]] bool IsLightAppTheme();

// Colours a dialog and its children. Called once, when the children exist; a dialog that is open
// while the user switches the theme keeps its colours.
void ApplyTheme(HWND dialog, DialogTheme& theme);

// The height of a font in logical units, as CreateFontW takes it, on the device of the context.
[[nodiscard]] LONG FontHeight(int points, HDC dc);

// The interface font at the screen's resolution; empty on failure.
[[nodiscard]] Font CreateUiFont(int points);

// Prepares a control's device context; returns the brush for its background, which stays ours.
[[nodiscard]] HBRUSH ThemedCtlColor(HDC dc, const DialogTheme& theme);

// Fills the dialog's client area. False when the theme has no brush.
[[nodiscard]] bool EraseThemedBackground(HWND dialog, HDC dc, const DialogTheme& theme);

// Gives back the font and the brush. For a dialog that is being destroyed: its controls draw no
// more.
void ReleaseTheme(DialogTheme& theme);

}  // namespace morvane
