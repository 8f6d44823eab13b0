#include "program/faulty_scene.h"

#include <algorithm>
#include <sstream>

namespace morvane::test {
namespace {

// Beside the data folder and not in it: the tests look at what the program leaves there.
std::wstring ReportPath() {
    return RoamingFolder() + L"\\faults.txt";
}

Environment PlanEnvironment(const std::string& plan) {
    return {{L"MORVANE_FAULTS", std::wstring(plan.begin(), plan.end())},
            {L"MORVANE_FAULT_REPORT", ReportPath()}};
}

}  // namespace

void FaultyProgramTest::SetUp() {
    ProgramTest::SetUp();
    if (!IsSkipped()) {
        ForgetNotedCalls();
    }
}

void FaultyProgramTest::TearDown() {
    ForgetNotedCalls();
}

Program FaultyProgram(const std::string& plan, const std::wstring& arguments) {
    return Program::FromFile(RequiredPath(L"MORVANE_TEST_FAULTY_PROGRAM"), arguments,
                             PlanEnvironment(plan));
}

Program StartedFaultyProgram(const std::string& plan) {
    Program program = FaultyProgram(plan);
    EXPECT_NE(program.WaitForControlWindow(), nullptr) << "no control window: " << plan;
    return program;
}

std::optional<DWORD> RunFaultyProgram(const std::string& plan, const std::wstring& arguments) {
    return FaultyProgram(plan, arguments).WaitForExit();
}

std::vector<std::string> NotedCalls() {
    std::istringstream text(ReadFileBytes(ReportPath()).value_or(std::string()));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

void ForgetNotedCalls() {
    DeleteFileW(ReportPath().c_str());
}

std::size_t CountOf(const std::string& notedCall) {
    const std::vector<std::string> lines = NotedCalls();
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), notedCall));
}

}  // namespace morvane::test
