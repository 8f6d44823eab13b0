#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/win.h"
#include "kit/result.h"
#include "support/child_process.h"

namespace morvane::kit {

// A test program, or one that as a whole is a test.
struct Level {
    const char* name;
    const wchar_t* file;
    const wchar_t* arguments;
    const char* onlyTest;  // null: the program lists its tests
};

// The unpacked kit: the program beside verify.cmd, everything else in a folder.
struct Kit {
    std::wstring folder;
    HANDLE stop = nullptr;  // set when the user wants the run to end

    [[nodiscard]] std::wstring Program() const { return folder + L"\\Morvane.exe"; }
    [[nodiscard]] std::wstring Part(std::wstring_view name) const {
        return std::wstring(folder).append(L"\\tests\\").append(name);
    }
    [[nodiscard]] test::Environment TestEnvironment(std::string_view filter) const;
};

[[nodiscard]] const std::vector<Level>& Levels();

// Empty if the program does not start or lists none.
[[nodiscard]] std::vector<Test> TestsOf(const Kit& kit, const Level& level);

// GoogleTest's form: alternatives between colons, "*" for any text, "?" for any character.
[[nodiscard]] bool Matches(std::string_view text, std::string_view patterns);

// What makes GoogleTest run these tests of all: whole suites by a star, as a list of every name
// could be too long for a variable.
[[nodiscard]] std::string FilterOf(const std::vector<Test>& chosen, const std::vector<Test>& all);

}  // namespace morvane::kit
