#include "kit/level_run.h"

#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>

#include "kit/running_program.h"

namespace morvane::kit {
namespace {

// Of a test, and of the program outside of tests; more than what a test program allows a test.
constexpr std::chrono::seconds Limit{120};
constexpr int MaxStarts = 5;
constexpr std::size_t MaxText = 20'000;

constexpr std::string_view RunMark = "[ RUN      ] ";

struct Mark {
    std::string_view text;
    Outcome outcome;
};

constexpr Mark Marks[] = {
    {"[       OK ] ", Outcome::Passed},
    {"[  FAILED  ] ", Outcome::Failed},
    {"[  SKIPPED ] ", Outcome::Skipped},
};

struct Running {
    Test test;
    Clock::time_point start;
    std::string text;
};

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

Test TestNamed(std::string_view name) {
    const std::size_t point = name.find('.');
    return {std::string(name.substr(0, point)),
            std::string(point == std::string_view::npos ? "" : name.substr(point + 1))};
}

// A test may leave its own line without an end.
std::optional<Outcome> OutcomeIn(std::string_view line, const std::string& name) {
    for (const Mark& mark : Marks) {
        const std::size_t place = line.find(mark.text);
        if (place != std::string_view::npos &&
            line.substr(place + mark.text.size()).starts_with(name)) {
            return mark.outcome;
        }
    }
    return std::nullopt;
}

// The test programs repeat a skipped test's name and reason in a line of their own.
std::string ReasonIn(const std::string& text, const std::string& name) {
    const std::string start = "skipped: " + name + ": ";
    const std::size_t place = text.find(start);
    if (place == std::string::npos) {
        return text;
    }
    const std::size_t reason = place + start.size();
    return text.substr(reason, text.find('\n', reason) - reason);
}

std::string WhyItEnded(Happening happening, const RunningProgram& program) {
    constexpr std::size_t Longest = 80;
    char text[Longest]{};
    if (happening == Happening::TooLate) {
        std::snprintf(text, sizeof(text), "nothing happened for %d seconds",
                      static_cast<int>(Limit.count()));
    } else if (!program.Started()) {
        return "the test program does not start";
    } else {
        std::snprintf(text, sizeof(text), "the test program ended with code %lu (0x%08lX)",
                      program.ExitCode(), program.ExitCode());
    }
    return text;
}

// A variable holds several times as many names as there are.
std::string FilterOf(const std::vector<Test>& tests) {
    std::string filter;
    for (const Test& test : tests) {
        filter += FullName(test) + ":";
    }
    return filter;
}

void RemoveTest(std::vector<Test>& tests, const Test& test) {
    std::erase_if(tests, [&](const Test& other) { return FullName(other) == FullName(test); });
}

// One start of a level's program.
class Attempt {
public:
    Attempt(const Level& level, const LevelRun& run, std::vector<Test>& left)
        : level_(&level), run_(&run), left_(&left) {}

    void Take(const std::string& line) {
        const std::size_t start = line.find(RunMark);
        if (start != std::string::npos) {
            Begin(TestNamed(std::string_view(line).substr(start + RunMark.size())));
            return;
        }
        if (!isRunning_) {
            return;
        }
        const std::string name = FullName(running_.test);
        const std::optional<Outcome> outcome = OutcomeIn(line, name);
        if (outcome) {
            End(*outcome,
                *outcome == Outcome::Skipped ? ReasonIn(running_.text, name) : running_.text);
        } else if (running_.text.size() < MaxText) {
            running_.text.append(line).append("\n");
        }
    }

    void Begin(Test test) {
        run_->onStart(test);
        running_ = {std::move(test), Clock::now(), {}};
        isRunning_ = true;
    }

    void End(Outcome outcome, const std::string& text) {
        isExplained_ = isExplained_ || outcome != Outcome::Passed;
        ++results_;
        run_->onResult({level_->name, running_.test, outcome, SecondsSince(running_.start), text});
        RemoveTest(*left_, running_.test);
        isRunning_ = false;
    }

    // Null between tests.
    [[nodiscard]] const Running* Current() const { return isRunning_ ? &running_ : nullptr; }
    [[nodiscard]] int Results() const { return results_; }
    // True if a result tells why the program says that it failed; a skip is a failure to it, too.
    [[nodiscard]] bool IsExplained() const { return isExplained_; }

private:
    const Level* level_;
    const LevelRun* run_;
    std::vector<Test>* left_;
    Running running_;
    bool isRunning_ = false;
    int results_ = 0;
    bool isExplained_ = false;
};

// False if the program need not be started again.
bool RunOnce(const Kit& kit, const Level& level, const LevelRun& run, std::vector<Test>& left) {
    RunningProgram program(kit.Part(level.file), level.arguments,
                           kit.TestEnvironment(FilterOf(left)), kit.stop);
    Attempt attempt(level, run, left);
    if (level.onlyTest != nullptr) {
        attempt.Begin(left.front());
    }
    std::string line;
    Happening happening = Happening::Line;
    while (happening == Happening::Line) {
        const Running* const running = attempt.Current();
        const Clock::time_point since = running != nullptr ? running->start : Clock::now();
        happening = program.Next(line, since + Limit);
        if (happening == Happening::Line) {
            attempt.Take(line);
        }
    }
    if (happening == Happening::Stopped) {
        return false;
    }
    const bool ended = happening == Happening::Ended && program.Started();
    const Running* const last = attempt.Current();
    if (last != nullptr) {
        const std::string text = last->text;
        if (level.onlyTest != nullptr && ended) {
            attempt.End(program.ExitCode() == 0 ? Outcome::Passed : Outcome::Failed, text);
        } else {
            attempt.End(Outcome::Error, text + WhyItEnded(happening, program));
        }
    } else if (!ended || !left.empty() || (program.ExitCode() != 0 && !attempt.IsExplained())) {
        attempt.Begin({level.name, "OutsideOfTests"});
        attempt.End(Outcome::Error, WhyItEnded(happening, program));
        return attempt.Results() > 1;
    }
    return attempt.Results() > 0;
}

}  // namespace

void RunLevel(const Kit& kit, const Level& level, const LevelRun& run) {
    std::vector<Test> left = run.tests;
    for (int starts = 0; !left.empty() && starts < MaxStarts; ++starts) {
        if (!RunOnce(kit, level, run, left)) {
            break;
        }
    }
    for (const Test& test : left) {
        run.onResult({level.name, test, Outcome::NotRun, 0, {}});
    }
}

}  // namespace morvane::kit
