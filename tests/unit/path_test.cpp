#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>

#include "shell/data_folder.h"
#include "shell/remove_tree.h"
#include "support/printed.h"

namespace morvane::test {

namespace {

TEST(VerbatimPath, PutsThePrefixBeforeTheNormalPath) {
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"C:\\", L"\\\\?\\C:\\"},
        {L"C:\\a", L"\\\\?\\C:\\a"},
        {L"C:\\a b\\c", L"\\\\?\\C:\\a b\\c"},
        {L"C:/a/b", L"\\\\?\\C:\\a\\b"},
        {L"C:\\a\\..\\b\\.\\c", L"\\\\?\\C:\\b\\c"},
        {L"C:\\a\\\\b", L"\\\\?\\C:\\a\\b"},
        {L"C:\\" + std::wstring(300, L'x'), L"\\\\?\\C:\\" + std::wstring(300, L'x')},
        {L"C:\\\u7A93", L"\\\\?\\C:\\\u7A93"},
        {L"\\\\server\\share\\a", L"\\\\?\\UNC\\server\\share\\a"},
        {L"\\\\s", L"\\\\?\\UNC\\s"},
        {L"//server/share/a", L"\\\\?\\UNC\\server\\share\\a"},
        {L"", L""},
        // A path that already has the prefix stays unchanged.
        {L"\\\\?\\C:\\a b\\c. ", L"\\\\?\\C:\\a b\\c. "},
        {L"\\\\?\\C:\\a", L"\\\\?\\C:\\a"},
        {L"\\\\?\\UNC\\server\\share", L"\\\\?\\UNC\\server\\share"},
        {L"\\\\?\\", L"\\\\?\\"},
    };
    for (const auto& [path, verbatim] : cases) {
        EXPECT_EQ(Printed(VerbatimPath(path)), Printed(verbatim)) << Printed(path);
        EXPECT_EQ(Printed(VerbatimPath(VerbatimPath(path))), Printed(verbatim)) << Printed(path);
    }
}

// These folders do not exist; the rejection of links is tested with real links elsewhere.
TEST(IsOwnDataFolder, ChecksTheNameOfTheLastFolder) {
    constexpr std::pair<std::wstring_view, bool> Cases[] = {
        {L"", false},
        {L"Morvane", true},
        {L"C:\\missing\\Morvane", true},
        {L"C:\\missing\\mORVANE", true},
        {L"C:/missing/Morvane", true},
        {L"C:\\missing/Morvane", true},
        {L"C:/missing\\Morvane", true},
        {L"\\Morvane", true},
        {L"C:\\missing\\Morvane\\", false},
        {L"C:\\missing\\Morvane/", false},
        {L"C:\\missing\\Morvane\\x", false},
        {L"C:\\missing\\Morvane ", false},
        {L"C:\\missing\\Morvane2", false},
        {L"C:\\missing\\xMorvane", false},
        {L"C:\\missing\\Morvan", false},
        {L"C:\\missing\\Morv\u00E4ne", false},
        {L"C:\\missing", false},
        {L"C:\\", false},
        {L"C:\\missing\\My Morvane", false},
        {L"C:\\missing\\Mo\uFF52vane", false},
        {L"\\", false},
        {L"C:Morvane", false},
    };
    for (const auto& [path, own] : Cases) {
        EXPECT_EQ(IsOwnDataFolder(path), own) << Printed(path);
    }
}

}  // namespace

}  // namespace morvane::test
