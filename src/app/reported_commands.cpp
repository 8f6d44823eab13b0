#include "app/reported_commands.h"

#include <optional>
#include <string>

#include "base/rect.h"
#include "i18n/strings.h"
#include "pin/pin_operations.h"
#include "pin/window_query.h"
#include "settings/text.h"
#include "shell/engine_binding.h"
#include "shell/startup_shortcut.h"
#include "ui/tray_icon.h"

namespace morvane {
namespace {

void Inform(const std::wstring& text) {
    ShowBalloon(GetText(StrAppName), text, BalloonInfo);
}

void Warn(StringId text) {
    ShowBalloon(GetText(StrAppName), GetText(text), BalloonWarning);
}

}  // namespace

void PinWindowAtCurrentSize(HWND window) {
    const std::optional<RECT> frame = ReadMeasurableFrame(window);
    if (!frame) {
        Warn(StrSizeUnreadable);
        return;
    }
    const WindowTitle title = ReadTitle(window);
    if (title.length == 0) {
        Warn(StrTitleUnreadable);
        return;
    }
    if (!HasRoomFor(title.View())) {
        Warn(StrLimitReached);
        return;
    }
    RefreshEngineBinding();
    AddWindowWithMinSize(window, Width(*frame), Height(*frame), title.View());
    // The size as measured, which is what the user sees, even where the stored one was clamped.
    Inform(FormatText(StrMinSizeSet, FormatSize(Width(*frame), Height(*frame))));
}

void ToggleStartWithWindows() {
    if (IsStartupEnabled()) {
        RemoveStartupShortcut();
        // Not checked: if the removal failed, the next menu still shows the check mark.
        Inform(GetText(StrStartupDisabled));
    } else if (InstallStartupShortcut()) {
        Inform(GetText(StrStartupEnabled));
    } else {
        Warn(StrStartupFailed);
    }
}

}  // namespace morvane
