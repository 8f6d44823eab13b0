#include "soak/churn.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <vector>

#include "soak/steps.h"
#include "support/settings_reference.h"
#include "support/test_environment.h"
#include "unit/printed.h"

namespace morvane::test {
namespace {

constexpr std::size_t JournalLength = 30;
constexpr std::uint64_t ForgetInterval = 60;  // steps
constexpr int MaxChecks = 3;
constexpr int FirstWindows = 6;

// How many extra passes an order may need: per check, and in the whole run (a fixed number, plus
// one per so many steps).
constexpr int MaxExtraPasses = 4;
constexpr std::uint64_t FreeExtraPasses = 8;
constexpr std::uint64_t StepsPerExtraPass = 100;

// The same for repeated checks, which the program's own timer can make necessary.
constexpr std::uint64_t FreeRepeats = 8;
constexpr std::uint64_t StepsPerRepeat = 20;

constexpr int JudgingRounds = 12;
constexpr int JudgingAttempts = 36;

// How often an order may stay wrong though the requests are right. Seen once in several thousand
// steps, and only on a busy machine.
constexpr std::uint64_t FreeWrongOrders = 1;
constexpr std::uint64_t StepsPerWrongOrder = 5'000;

// One pass would do for the program, but passes are cheap and checks are not.
constexpr int PassCounts[] = {1, 1, 2, 3, 5, 8, 12, 20, 30};

std::vector<Step> AllSteps() {
    std::vector<Step> steps(std::begin(WindowSteps), std::end(WindowSteps));
    steps.insert(steps.end(), std::begin(ProgramSteps), std::end(ProgramSteps));
    return steps;
}

const Step& AnyStep(Generator& generator) {
    static const std::vector<Step> steps = AllSteps();
    unsigned total = 0;
    for (const Step& step : steps) {
        total += step.weight;
    }
    auto ticket = static_cast<unsigned>(generator.Below(total));
    for (const Step& step : steps) {
        if (ticket < step.weight) {
            return step;
        }
        ticket -= step.weight;
    }
    return steps.front();
}

// A check can fall into a pass of the program's own timer, which has raised one window but not yet
// the one above it. A real difference is still there when no pass is running.
std::string CheckRepeatedly(Churn& churn, std::string (*check)(const Model&)) {
    std::string difference = check(churn.model);
    for (int again = 1; again < MaxChecks && !difference.empty(); ++again) {
        ++churn.counts.repeatedChecks;
        churn.driver->WaitForQueue();
        difference = check(churn.model);
    }
    return difference;
}

// The windows record every request, which would fill the memory of their processes.
void ForgetRecords(Churn& churn) {
    for (const ModelWindow& window : churn.model.windows) {
        churn.actors.at(window.actor).ForgetRecords(window.window);
    }
}

std::vector<LONGLONG> TopmostRequestTimes(Churn& churn, HWND window) {
    std::vector<LONGLONG> times;
    const ModelWindow* const own = FindModelWindow(churn.model, window);
    for (const PositionRequest& request : churn.actors.at(own->actor).Requests(window)) {
        if (request.insertAfter == HWND_TOPMOST && (request.flags & SWP_NOZORDER) == 0) {
            times.push_back(request.counter);
        }
    }
    return times;
}

enum class Round : std::uint8_t { Right, Wrong, MetTheTimer };

// Whether one more pass asks the windows in the right order, the highest last. A pass asks each
// window once; if one was asked twice, a pass of the program's own timer came in between, and the
// two cannot be told apart.
Round JudgeRound(Churn& churn) {
    ForgetRecords(churn);
    RunPasses(churn, 1);
    Round verdict = Round::Right;
    LONGLONG higher = std::numeric_limits<LONGLONG>::max();
    for (const HWND window : churn.model.expected) {
        const std::vector<LONGLONG> times = TopmostRequestTimes(churn, window);
        if (times.size() > 1) {
            return Round::MetTheTimer;
        }
        if (times.empty() || times.front() >= higher) {
            verdict = Round::Wrong;
        } else {
            higher = times.front();
        }
    }
    return verdict;
}

// An order that stays wrong is the program's fault if any pass makes its requests in the wrong
// order, or if they cannot be judged.
std::string FaultOfTheProgram(Churn& churn) {
    int right = 0;
    for (int attempt = 0; attempt < JudgingAttempts && right < JudgingRounds; ++attempt) {
        switch (JudgeRound(churn)) {
            case Round::Right:
                ++right;
                break;
            case Round::Wrong:
                return "  a pass makes its requests in the wrong order\n";
            case Round::MetTheTimer:
                break;
        }
    }
    return right < JudgingRounds ? "  too many judged passes ran into the program's own timer\n"
                                 : "";
}

// Empty if the program made its requests in the right order and few enough orders have come out
// wrong despite that.
std::string JudgeOrder(Churn& churn, const std::string& difference) {
    const std::string fault = FaultOfTheProgram(churn);
    if (!fault.empty()) {
        return difference + fault;
    }
    const std::uint64_t allowed = FreeWrongOrders + churn.counts.steps / StepsPerWrongOrder;
    ++churn.counts.wrongOrdersDespiteRightRequests;
    return churn.counts.wrongOrdersDespiteRightRequests > allowed
               ? difference +
                     "  and too many orders have come out wrong before, despite right requests\n"
               : "";
}

// The system raises a window when it activates it, shortly after another window or a menu is gone,
// and this can fall into the last pass. Another pass puts it right, unless the same happens to that
// one on a busy machine.
std::string CheckOrder(Churn& churn) {
    std::string difference = CheckRepeatedly(churn, OrderDifference);
    for (int extra = 0; extra < MaxExtraPasses && !difference.empty(); ++extra) {
        RunPasses(churn, 1);
        ++churn.counts.extraPasses;
        difference = CheckRepeatedly(churn, OrderDifference);
    }
    if (!difference.empty()) {
        difference = JudgeOrder(churn, difference);
    }
    if (difference.empty() &&
        churn.counts.extraPasses > FreeExtraPasses + churn.counts.steps / StepsPerExtraPass) {
        return "  the order needed too many extra passes\n";
    }
    return difference;
}

}  // namespace

std::string CheckModel(Churn& churn) {
    std::string difference = CheckRepeatedly(churn, WindowDifferences);
    if (difference.empty()) {
        difference = CheckOrder(churn);
    }
    if (difference.empty() &&
        churn.counts.repeatedChecks > FreeRepeats + churn.counts.steps / StepsPerRepeat) {
        return "  too many checks were repeated\n";
    }
    return difference;
}

namespace {

const Step& WindowStepNamed(std::string_view name) {
    return *std::find_if(std::begin(WindowSteps), std::end(WindowSteps),
                         [name](const Step& step) { return step.name == name; });
}

}  // namespace

void BeginChurn(Churn& churn) {
    // cppcheck-suppress constVariable ; what it creates changes it
    for (Actor& actor : churn.actors) {
        churn.owners.push_back(actor.Create({.title = L"", .visible = false}));
    }
    churn.journal.emplace_back("the first windows:");
    churn.settings.ExpectSaved({true, {}});
    std::string wrong;
    for (int window = 0; window < FirstWindows; ++window) {
        WindowStepNamed("appear").run(churn, wrong);
    }
    RunPasses(churn, 1);
}

void RunPasses(Churn& churn, int count) {
    churn.driver->RunPasses(count);
    RunModelPass(churn.model, churn.settings.Readable());
}

std::string RunStep(Churn& churn) {
    std::string wrong;
    for (;;) {
        const Step& step = AnyStep(churn.generator);
        const std::string line = "step " + std::to_string(churn.counts.steps) + ": " + step.name;
        churn.journal.push_back(line);
        if (step.run(churn, wrong)) {
            break;
        }
        churn.journal.pop_back();
    }
    if (!wrong.empty()) {
        return wrong;
    }
    const int passes = churn.generator.OneOf(PassCounts);
    RunPasses(churn, passes);
    churn.journal.back() += "; " + std::to_string(passes) + " passes";
    while (churn.journal.size() > JournalLength) {
        churn.journal.pop_front();
    }
    ++churn.counts.steps;
    wrong = CheckModel(churn);
    if (wrong.empty()) {
        wrong = churn.settings.Difference();
    }
    if (churn.counts.steps % ForgetInterval == 0) {
        ForgetRecords(churn);
    }
    return wrong;
}

std::string RunQuietStep(Churn& churn) {
    RunPasses(churn, 1);
    return CheckModel(churn);
}

void Note(Churn& churn, const std::string& line) {
    churn.journal.back() += " " + line;
}

// The program's own requests have the flags 53 and 54 (hexadecimal).
std::string LastRequests(Churn& churn) {
    constexpr std::size_t Enough = 6;
    std::string text;
    for (const ModelWindow& window : churn.model.windows) {
        const std::vector<PositionRequest> requests =
            churn.actors.at(window.actor).Requests(window.window);
        text += "  " + std::to_string(NumberFromWindow(window.window)) + ":";
        const std::size_t first = requests.size() - std::min(requests.size(), Enough);
        for (std::size_t index = first; index < requests.size(); ++index) {
            const PositionRequest& request = requests[index];
            std::array<char, 64> line{};
            static_cast<void>(std::snprintf(line.data(), line.size(), " %lld after %lld flags %x;",
                                            request.counter, NumberFromWindow(request.insertAfter),
                                            static_cast<unsigned>(request.flags)));
            text += line.data();
        }
        text += "\n";
    }
    return text;
}

std::string Account(Churn& churn) {
    std::string text = "the last steps:\n";
    for (const std::string& line : churn.journal) {
        text += "  " + line + "\n";
    }
    text += "the windows:\n" + Described(churn.model);
    text +=
        "the last requests that reached them, with their time in ticks of the performance "
        "counter:\n";
    text += LastRequests(churn) + "the settings file: ";
    text += Printed(churn.settings.Bytes()) + "\nread as: " + Printed(churn.settings.Readable());
    return text;
}

}  // namespace morvane::test
