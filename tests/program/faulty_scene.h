#pragma once

#include <string>
#include <vector>

#include "program/scene.h"

// The program with faults of the platform (MORVANE_TEST_FAULTY_PROGRAM): the very program, in which
// some platform functions fail. tests/faulty/fault.h tells how a plan is written.
namespace morvane::test {

// What the process returns when a plan cannot be carried out.
inline constexpr DWORD PlanFailed = 99;

class FaultyProgramTest : public ProgramTest {
protected:
    void SetUp() override;
    void TearDown() override;
};

[[nodiscard]] Program FaultyProgram(const std::string& plan, const std::wstring& arguments = L"");

// Its control window is there as well; a failure of the running test otherwise.
[[nodiscard]] Program StartedFaultyProgram(const std::string& plan);

// Waits for its end; nothing when it does not end.
[[nodiscard]] std::optional<DWORD> RunFaultyProgram(const std::string& plan,
                                                    const std::wstring& arguments = L"");

// The calls of the functions in the plans of this test so far, oldest first: "SetTimer failed".
[[nodiscard]] std::vector<std::string> NotedCalls();
void ForgetNotedCalls();

// How often the line is among them.
[[nodiscard]] std::size_t CountOf(const std::string& notedCall);

}  // namespace morvane::test
