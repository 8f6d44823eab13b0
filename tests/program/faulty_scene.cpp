#include "program/faulty_scene.h"

#include <algorithm>
#include <sstream>

namespace morvane::test {
namespace {

// Outside the data folder, whose contents the tests check.
std::wstring ReportPath() {
    return RoamingFolder() + L"\\faults.txt";
}

}  // namespace

void FaultyProgramTest::SetUp() {
    ProgramTest::SetUp();
    if (!IsSkipped()) {
        ForgetRecordedCalls();
    }
}

void FaultyProgramTest::TearDown() {
    ForgetRecordedCalls();
}

Program FaultyProgram(const std::string& plan, const std::wstring& arguments, Environment changes) {
    changes.emplace_back(L"MORVANE_FAULTS", std::wstring(plan.begin(), plan.end()));
    changes.emplace_back(L"MORVANE_FAULT_REPORT", ReportPath());
    return Program::FromFile(RequiredPath(L"MORVANE_TEST_FAULTY_PROGRAM"), arguments, changes);
}

Program StartedFaultyProgram(const std::string& plan) {
    Program program = FaultyProgram(plan);
    EXPECT_NE(program.WaitForControlWindow(), nullptr) << "no control window: " << plan;
    return program;
}

std::optional<DWORD> RunFaultyProgram(const std::string& plan, const std::wstring& arguments,
                                      const Environment& changes) {
    return FaultyProgram(plan, arguments, changes).WaitForExit();
}

std::vector<std::string> RecordedCalls() {
    std::istringstream text(ReadFileBytes(ReportPath()).value_or(std::string()));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

void ForgetRecordedCalls() {
    DeleteFileW(ReportPath().c_str());
}

std::size_t CountOf(const std::string& recordedCall) {
    const std::vector<std::string> lines = RecordedCalls();
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), recordedCall));
}

}  // namespace morvane::test
