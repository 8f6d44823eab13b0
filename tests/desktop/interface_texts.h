#pragma once

#include <span>

namespace morvane::test {

// What the menu and the About dialog say in one language, kept apart from the program's own table.
struct InterfaceTexts {
    const wchar_t* code;  // as MORVANE_LANG takes it
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

// The program chooses its language anew, as a start with this MORVANE_LANG would.
void ChooseLanguage(const wchar_t* code);

}  // namespace morvane::test
