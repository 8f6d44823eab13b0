#pragma once

#include <string>
#include <vector>

#include "program/scene.h"

// The program with failing platform functions (MORVANE_TEST_FAULTY_PROGRAM). tests/faulty/fault.h
// describes how a plan is written.
namespace morvane::test {

// The exit code for an invalid plan.
inline constexpr DWORD PlanFailed = 99;

[[nodiscard]] Program FaultyProgram(const std::string& plan, const std::wstring& arguments = L"");

// Like StartedProgram.
[[nodiscard]] Program StartedFaultyProgram(const std::string& plan, std::string_view settings = {});

// Returns the exit code; empty if it does not exit.
[[nodiscard]] std::optional<DWORD> RunFaultyProgram(const std::string& plan,
                                                    const std::wstring& arguments = L"");

// The recorded calls since the last such program was started, oldest first: "SetTimer failed".
[[nodiscard]] std::vector<std::string> RecordedCalls();

// How often that call was recorded.
[[nodiscard]] std::size_t CountOf(const std::string& recordedCall);

}  // namespace morvane::test
