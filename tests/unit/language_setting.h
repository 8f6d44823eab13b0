#pragma once

#include <optional>
#include <string>

namespace morvane::test {

// The language that the program starts in when MORVANE_LANG has this value (null: is not set).
// When it goes, the variable gets its previous value and the language is chosen anew.
class LanguageSetting {
public:
    explicit LanguageSetting(const wchar_t* variable);
    LanguageSetting(const LanguageSetting&) = delete;
    LanguageSetting& operator=(const LanguageSetting&) = delete;
    LanguageSetting(LanguageSetting&&) = delete;
    LanguageSetting& operator=(LanguageSetting&&) = delete;
    ~LanguageSetting();

private:
    std::optional<std::wstring> previous_;
};

}  // namespace morvane::test
