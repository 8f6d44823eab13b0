#pragma once

#include <optional>
#include <string>

namespace morvane::test {

// Chooses the language as if the program were started with this MORVANE_LANG (null: not set). The
// destructor restores the variable and chooses the language again.
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
