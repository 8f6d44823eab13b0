// The test programs' main function: GoogleTest's, with a report of the tests that were skipped and
// an end for those that hang.
//
// MORVANE_TEST_KNOWN_SKIPS names a file with the tests that are known to be skipped here, a line
// each: the name, a colon and the reason. With it, any other skip is a failure. Without it, every
// skip is a failure if MORVANE_TEST_PROGRAM is set, as the harness always does, and otherwise none.

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "base/win.h"
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
    // A list that cannot be read is empty.
    explicit SkipReport(const std::optional<std::wstring>& list)
        : checked_(list || EnvironmentVariable(L"MORVANE_TEST_PROGRAM")),
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

using Clock = std::chrono::steady_clock;

// The longest test takes half a minute on a busy machine, and what tests wait for gives up within a
// minute, which tells more than this does.
constexpr std::chrono::seconds LongestTest{90};

// As many openings as the soak wants take minutes.
constexpr std::chrono::minutes LongestFullTest{20};

// Not part of the listener: the thread outlives it.
std::atomic<const testing::TestInfo*> runningTest = nullptr;
std::atomic<Clock::time_point> runningSince;

class HangWatch : public testing::EmptyTestEventListener {
public:
    explicit HangWatch(std::chrono::seconds limit) {
        std::thread([limit] { Watch(limit); }).detach();
    }

    void OnTestStart(const testing::TestInfo& test) override {
        runningSince = Clock::now();
        runningTest = &test;
    }
    void OnTestEnd(const testing::TestInfo& /*test*/) override { runningTest = nullptr; }

private:
    static void Watch(std::chrono::seconds limit) {
        for (;;) {
            std::this_thread::sleep_for(std::chrono::seconds(1));
            const testing::TestInfo* const test = runningTest;
            if (test != nullptr && Clock::now() - runningSince.load() > limit) {
                std::cout << "FAILED: " << test->test_suite_name() << "." << test->name()
                          << " hangs: more than " << limit.count() << " s\n"
                          << std::flush;
                // An orderly exit could wait for what hangs.
                TerminateProcess(GetCurrentProcess(), EXIT_FAILURE);
            }
        }
    }
};

}  // namespace

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    // GoogleTest owns its listeners.
    auto* const report = new SkipReport(EnvironmentVariable(L"MORVANE_TEST_KNOWN_SKIPS"));
    testing::TestEventListeners& listeners = testing::UnitTest::GetInstance()->listeners();
    listeners.Append(report);
    listeners.Append(new HangWatch(
        EnvironmentVariable(L"MORVANE_TEST_FULL") == L"1" ? LongestFullTest : LongestTest));
    const int result = RUN_ALL_TESTS();
    return report->Accepts() ? result : EXIT_FAILURE;
}
