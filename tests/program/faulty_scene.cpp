#include "program/faulty_scene.h"

#include <algorithm>
#include <sstream>

namespace morvane::test {
namespace {

// Outside the data folder, whose contents the tests check.
std::wstring ReportPath() {
    return TestPath(L"faults.txt");
}

}  // namespace

Program FaultyProgram(const std::string& plan, const std::wstring& arguments) {
    DeleteFileW(ReportPath().c_str());
    return Program::FromFile(RequiredPath(L"MORVANE_TEST_FAULTY_PROGRAM"), arguments,
                             {{L"MORVANE_FAULTS", std::wstring(plan.begin(), plan.end())},
                              {L"MORVANE_FAULT_REPORT", ReportPath()}});
}

Program StartedFaultyProgram(const std::string& plan, std::string_view settings) {
    if (!settings.empty()) {
        WriteSettings(settings);
    }
    Program program = FaultyProgram(plan);
    EXPECT_NE(program.WaitForControlWindow(), nullptr) << "no control window: " << plan;
    return program;
}

std::optional<DWORD> RunFaultyProgram(const std::string& plan, const std::wstring& arguments) {
    return FaultyProgram(plan, arguments).WaitForExit();
}

std::vector<std::string> RecordedCalls() {
    std::istringstream text(ReadFileBytes(ReportPath()).value_or(std::string()));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::size_t CountOf(const std::string& recordedCall) {
    const std::vector<std::string> lines = RecordedCalls();
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), recordedCall));
}

}  // namespace morvane::test
