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
constexpr int Looks = 3;
constexpr int FirstWindows = 6;

// How many passes more than promised an order may need: at once, and in the whole run so many and
// one in so many steps.
constexpr int RepairAttempts = 4;
constexpr std::uint64_t FreeRepairs = 8;
constexpr std::uint64_t StepsPerRepair = 100;

// The same for a second look, which the program's own timer can make necessary.
constexpr std::uint64_t FreeLooks = 8;
constexpr std::uint64_t StepsPerLook = 20;

constexpr int JudgingRounds = 12;
constexpr int JudgingAttempts = 36;

// How often an order may stay wrong though the requests are right: seen once in some thousand
// steps, and only on a busy machine.
constexpr std::uint64_t FreeOrdersOfTheSystem = 1;
constexpr std::uint64_t StepsPerOrderOfTheSystem = 5'000;

// One more than the program needs: passes are cheap, looks are not.
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

// The program's own timer goes on: a look can fall into one of its passes, where a window has been
// raised already and the one that belongs above it has not. What is really wrong is so at each look
// with no pass under way.
std::string LookAgainAndAgain(Churn& churn, std::string (*look)(const Model&)) {
    std::string difference = look(churn.model);
    for (int again = 1; again < Looks && !difference.empty(); ++again) {
        ++churn.counts.secondLooks;
        churn.driver->WaitForQueue();
        difference = look(churn.model);
    }
    return difference;
}

// What the windows record of every request would fill the memory of their processes.
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

// Whether one more pass asks the windows in the order in which they have to end, the highest last.
// Every pass asks each of them once: a window that has been asked twice tells of a pass of the
// program's own timer meanwhile, whose requests cannot be told from ours.
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

// An order that stays wrong is the program's fault when its requests come in a wrong one, be it
// once; and when they cannot be judged.
std::string FaultOfTheProgram(Churn& churn) {
    int right = 0;
    for (int attempt = 0; attempt < JudgingAttempts && right < JudgingRounds; ++attempt) {
        switch (JudgeRound(churn)) {
            case Round::Right:
                ++right;
                break;
            case Round::Wrong:
                return "  a pass asks the windows in a wrong order\n";
            case Round::MetTheTimer:
                break;
        }
    }
    return right < JudgingRounds ? "  too many passes ask a window more than once\n" : "";
}

// Empty when the program has asked in the right order, and not too many orders have come out wrong
// all the same.
std::string JudgeOrder(Churn& churn, const std::string& difference) {
    const std::string fault = FaultOfTheProgram(churn);
    if (!fault.empty()) {
        return difference + fault;
    }
    const std::uint64_t allowed =
        FreeOrdersOfTheSystem + churn.counts.steps / StepsPerOrderOfTheSystem;
    ++churn.counts.ordersOfTheSystem;
    return churn.counts.ordersOfTheSystem > allowed
               ? difference + "  and too many orders have come out wrong before\n"
               : "";
}

// The system raises a window too when it activates it, after another has gone or a menu has closed,
// and it does so a little later: in the middle of the last pass, it may be. A further pass puts
// that right; on a busy machine the same may happen to that one.
std::string LookAtOrder(Churn& churn) {
    std::string difference = LookAgainAndAgain(churn, OrderDifference);
    for (int repair = 0; repair < RepairAttempts && !difference.empty(); ++repair) {
        RunPasses(churn, 1);
        ++churn.counts.repairPasses;
        difference = LookAgainAndAgain(churn, OrderDifference);
    }
    if (!difference.empty()) {
        difference = JudgeOrder(churn, difference);
    }
    if (difference.empty() &&
        churn.counts.repairPasses > FreeRepairs + churn.counts.steps / StepsPerRepair) {
        return "  the order needed another pass too often\n";
    }
    return difference;
}

}  // namespace

std::string Look(Churn& churn) {
    std::string difference = LookAgainAndAgain(churn, WindowDifferences);
    if (difference.empty()) {
        difference = LookAtOrder(churn);
    }
    if (difference.empty() &&
        churn.counts.secondLooks > FreeLooks + churn.counts.steps / StepsPerLook) {
        return "  another look was needed too often\n";
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
    wrong = Look(churn);
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
    return Look(churn);
}

void Note(Churn& churn, const std::string& line) {
    churn.journal.back() += " " + line;
}

// Who asked for what last: the program's requests have the flags 53 and 54.
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
