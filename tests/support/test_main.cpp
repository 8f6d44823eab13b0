// The test programs' main function: GoogleTest's, and a report of the tests that were skipped.
//
// MORVANE_TEST_KNOWN_SKIPS names a file with the tests that are known to be skipped here, a line
// each: the name, a colon and the reason. With it, any other skip is a failure.

#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/test_files.h"

namespace {

using morvane::test::EnvironmentVariable;
using morvane::test::ReadFileBytes;

std::set<std::string> NamesIn(const std::string& list) {
    std::set<std::string> names;
    std::istringstream lines(list);
    for (std::string line; std::getline(lines, line);) {
        names.insert(line.substr(0, line.find(':')));
    }
    return names;
}

class SkipReport : public testing::EmptyTestEventListener {
public:
    // Without a list, every skip is accepted. A list that cannot be read is empty.
    explicit SkipReport(const std::optional<std::wstring>& list)
        : checked_(list.has_value()),
          known_(NamesIn(ReadFileBytes(list.value_or(L"")).value_or(""))) {}

    void OnTestEnd(const testing::TestInfo& test) override {
        if (!test.result()->Skipped()) {
            return;
        }
        const std::string name = std::string(test.test_suite_name()) + "." + test.name();
        std::cout << "skipped: " << name << ": " << ReasonOf(*test.result()) << '\n';
        if (checked_ && !known_.contains(name)) {
            unexpected_.push_back(name);
        }
    }

    // False if a test was skipped that is not on the list.
    [[nodiscard]] bool Accepts() const {
        for (const std::string& name : unexpected_) {
            std::cout << "FAILED: " << name << " is not known to be skipped here\n";
        }
        return unexpected_.empty();
    }

private:
    static std::string ReasonOf(const testing::TestResult& result) {
        for (int i = 0; i < result.total_part_count(); ++i) {
            if (result.GetTestPartResult(i).skipped()) {
                return result.GetTestPartResult(i).message();
            }
        }
        return {};
    }

    bool checked_;
    std::set<std::string> known_;
    std::vector<std::string> unexpected_;
};

}  // namespace

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    // GoogleTest owns its listeners.
    auto* const report = new SkipReport(EnvironmentVariable(L"MORVANE_TEST_KNOWN_SKIPS"));
    testing::UnitTest::GetInstance()->listeners().Append(report);
    const int result = RUN_ALL_TESTS();
    return report->Accepts() ? result : EXIT_FAILURE;
}
