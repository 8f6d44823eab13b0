#pragma once

#include <optional>
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

// Empty if nothing is missing.
[[nodiscard]] std::wstring MissingFile(const Kit& kit);

// Those that GoogleTest's filter chooses; nothing if the program cannot list them.
[[nodiscard]] std::optional<std::vector<Test>> TestsOf(const Kit& kit, const Level& level,
                                                       std::string_view filter);

// "*" stands for any text.
[[nodiscard]] bool Matches(std::string_view text, std::string_view pattern);

}  // namespace morvane::kit
