#include "unit/language_setting.h"

#include <gtest/gtest.h>

#include "base/win.h"
#include "i18n/language.h"
#include "support/child_process.h"

namespace morvane::test {

namespace {

constexpr const wchar_t* VariableName = L"MORVANE_LANG";

}  // namespace

LanguageSetting::LanguageSetting(const wchar_t* variable)
    : previous_(EnvironmentVariable(VariableName)) {
    EXPECT_NE(SetEnvironmentVariableW(VariableName, variable), FALSE);
    InitLanguage();
}

LanguageSetting::~LanguageSetting() {
    SetEnvironmentVariableW(VariableName, previous_ ? previous_->c_str() : nullptr);
    InitLanguage();
}

}  // namespace morvane::test
