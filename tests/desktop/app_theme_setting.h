#pragma once

#include <optional>

#include "base/win.h"

namespace morvane::test {

// The user's light or dark app theme in the registry of a disposable profile. The destructor
// removes the value.
class AppThemeSetting {
public:
    AppThemeSetting() { Remove(); }
    AppThemeSetting(const AppThemeSetting&) = delete;
    AppThemeSetting& operator=(const AppThemeSetting&) = delete;
    AppThemeSetting(AppThemeSetting&&) = delete;
    AppThemeSetting& operator=(AppThemeSetting&&) = delete;
    ~AppThemeSetting() { Remove(); }

    // No value: as if the user had never chosen a theme.
    static void Set(std::optional<DWORD> light) {
        if (light) {
            Write(REG_DWORD, &*light, sizeof(*light));
        } else {
            Remove();
        }
    }

    static void Write(DWORD type, const void* data, DWORD size) {
        RegSetKeyValueW(HKEY_CURRENT_USER, Key, Value, type, data, size);
    }

private:
    static void Remove() { RegDeleteKeyValueW(HKEY_CURRENT_USER, Key, Value); }

    static constexpr const wchar_t* Key =
        L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize";
    static constexpr const wchar_t* Value = L"AppsUseLightTheme";
};

}  // namespace morvane::test
