#include "pin/discovery.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "support/printed.h"

// The decisions of discovery that need no window.
namespace morvane::test {

namespace {

// Handles as the platform widens them, with and without sign extension.
constexpr std::uintptr_t Low = 0x7FFFFFFF;
constexpr std::uintptr_t Middle = 0x80000000;
constexpr std::uintptr_t High = 0xFFFFFFFF80000000;

MatchedWindow Match(std::uintptr_t handle, std::int32_t entryIndex) {
    return {reinterpret_cast<HWND>(handle), entryIndex};
}

TEST(HasLowerPriority, PutsLaterEntriesFirstAndThenLowerHandlesAsUnsignedNumbers) {
    struct Case {
        const char* name;
        MatchedWindow first;
        MatchedWindow second;
    };
    const Case cases[] = {
        {"below and at the sign bit of 32", Match(Low, 0), Match(Middle, 0)},
        {"at the sign bit of 32 and of 64", Match(Middle, 0), Match(High, 0)},
        {"below the one and at the other", Match(Low, 0), Match(High, 0)},
        {"neighbours", Match(Middle, 7), Match(Middle + 1, 7)},
        {"no handle", Match(0, 7), Match(1, 7)},
        {"entry against handles that agree", Match(Low, 1), Match(High, 0)},
        {"entry against handles that differ", Match(High, 1), Match(Low, 0)},
        {"entry alone", Match(Middle, 1), Match(Middle, 0)},
        {"last entry", Match(High, 99), Match(Low, 98)},
        {"last and first entry", Match(High, 99), Match(Low, 0)},
    };
    for (const Case& c : cases) {
        EXPECT_TRUE(HasLowerPriority(c.first, c.second)) << c.name;
        EXPECT_FALSE(HasLowerPriority(c.second, c.first)) << c.name;
    }
}

TEST(HasLowerPriority, PutsNothingBeforeItself) {
    for (const std::uintptr_t handle : {Low, Middle, High}) {
        for (const std::int32_t index : {0, 1, 99}) {
            EXPECT_FALSE(HasLowerPriority(Match(handle, index), Match(handle, index)))
                << handle << " of entry " << index;
        }
    }
}

TEST(IsProtectedSystemDialog, MatchesTheClassExactlyAndTheTextAnywhere) {
    struct Case {
        std::wstring_view title;
        std::wstring_view className;
        bool isProtected;
    };
    constexpr Case Cases[] = {
        {L"User Account Control", L"#32770", true},
        {L"The User Account Control box", L"#32770", true},
        {L"The Windows Security box", L"#32770", true},
        {L"The Windows \u30BB\u30AD\u30E5\u30EA\u30C6\u30A3 box", L"#32770", true},
        {L"The Credential box", L"#32770", true},
        {L"The \u8CC7\u683C\u60C5\u5831 box", L"#32770", true},
        {L"The Consent UI box", L"#32770", true},
        {L"the wINDOWS sECURITY box", L"#32770", true},
        {L"Credentials", L"#32770", true},
        {L"Windows Security", L"#327700", false},
        {L"Windows Security", L"#3277", false},
        {L"Windows Security", L"x#32770", false},
        {L"Windows Security", L" #32770", false},
        {L"Windows Security", L"32770", false},
        {L"Windows Security", L"", false},
        {L"Windows Security", L"Windows Security", false},
        {L"Windows Securit", L"#32770", false},
        {L"indows Security", L"#32770", false},
        {L"WindowsSecurity", L"#32770", false},
        {L"Windows", L"#32770", false},
        {L"User Account", L"#32770", false},
        {L"Consent", L"#32770", false},
        {L"\u8CC7\u683C", L"#32770", false},
        {L"#32770", L"#32770", false},
        {L"", L"#32770", false},
        {L"", L"", false},
    };
    for (const auto& [title, className, isProtected] : Cases) {
        EXPECT_EQ(IsProtectedSystemDialog(title, className), isProtected)
            << Printed(title) << " of class " << Printed(className);
    }
}

}  // namespace

}  // namespace morvane::test
