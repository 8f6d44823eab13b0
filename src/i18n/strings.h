#pragma once

// Every fixed text that the program shows.

#include <string>
#include <string_view>

namespace morvane {

// In the order of the rows of the text table.
enum StringId : int {
    StrAppName,
    StrAppDescription,
    StrAlwaysOnTop,
    StrAddRemove,
    StrAddRemoveMinSize,
    StrOpenSettings,
    StrApplyNow,
    StrExit,
    StrNoWindows,
    StrNoActiveWindow,
    StrActivePrefix,
    StrSizeUnreadable,
    StrTitleUnreadable,
    StrLimitReached,
    StrMinSizeSet,
    StrAbout,
    StrStartWithWindows,
    StrStartupEnabled,
    StrStartupDisabled,
    StrStartupFailed,
    StrAboutTitle,
    StrAboutVersion,
    StrClose,
    StringCount,
};

// The text in the current language: static, NUL-terminated, never null. An id outside the table
// gives the empty text.
[[nodiscard]] const wchar_t* GetText(StringId id);

// GetText with the first "{0}" replaced by the argument, verbatim.
[[nodiscard]] std::wstring FormatText(StringId id, std::wstring_view argument);

}  // namespace morvane
