#pragma once

#include <string>
#include <vector>

#include "program/scene.h"

// The program with failing platform functions (MORVANE_TEST_FAULTY_PROGRAM). tests/faulty/fault.h
// describes how a plan is written.
namespace morvane::test {

// The exit code for an invalid plan.
inline constexpr DWORD PlanFailed = 99;

class FaultyProgramTest : public ProgramTest {
protected:
    void SetUp() override;
    void TearDown() override;
};

[[nodiscard]] Program FaultyProgram(const std::string& plan, const std::wstring& arguments = L"",
                                    Environment changes = {});

// Waits for its control window too; fails the test if it does not come.
[[nodiscard]] Program StartedFaultyProgram(const std::string& plan);

// Returns the exit code; empty if it does not exit.
[[nodiscard]] std::optional<DWORD> RunFaultyProgram(const std::string& plan,
                                                    const std::wstring& arguments = L"",
                                                    const Environment& changes = {});

// The recorded calls in this test so far, oldest first, such as "SetTimer failed".
[[nodiscard]] std::vector<std::string> RecordedCalls();
void ForgetRecordedCalls();

// How often that call was recorded.
[[nodiscard]] std::size_t CountOf(const std::string& recordedCall);

}  // namespace morvane::test
