#pragma once

#include <span>

namespace morvane::test {

// The texts of the menu and the About dialog in one language, independent of the program's table.
struct InterfaceTexts {
    const wchar_t* code;  // for MORVANE_LANG
    const wchar_t* alwaysOnTop;
    const wchar_t* addRemove;
    const wchar_t* addRemoveMinSize;
    const wchar_t* openSettings;
    const wchar_t* applyNow;
    const wchar_t* startWithWindows;
    const wchar_t* about;
    const wchar_t* exit;
    const wchar_t* noWindows;
    const wchar_t* noActiveWindow;
    const wchar_t* activePrefix;
    const wchar_t* aboutTitle;
    const wchar_t* aboutVersion;
    const wchar_t* close;
};

[[nodiscard]] std::span<const InterfaceTexts> TextsOfAllLanguages();

// Chooses the interface language again, as if started with this MORVANE_LANG.
void ChooseLanguage(const wchar_t* code);

}  // namespace morvane::test
