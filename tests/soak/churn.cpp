#include "soak/churn.h"

#include <algorithm>
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

std::string Joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += "  " + line + "\n";
    }
    return text;
}

// The program's own timer goes on: a look can fall into one of its passes, where a window has been
// raised already and the one that belongs above it has not. What is really wrong is so at each look
// with no pass under way.
std::string Look(Churn& churn) {
    std::string text;
    for (int look = 0; look < Looks; ++look) {
        text = Joined(Differences(churn.model));
        if (text.empty()) {
            return {};
        }
        ++churn.counts.secondLooks;
        churn.driver->WaitForQueue();
    }
    return text;
}

// What the windows record of every request would fill the memory of their processes.
void ForgetRecords(Churn& churn) {
    for (const ModelWindow& window : churn.model.windows) {
        churn.actors.at(window.actor).ForgetRecords(window.window);
    }
}

const Step& WindowStepNamed(std::string_view name) {
    return *std::find_if(std::begin(WindowSteps), std::end(WindowSteps),
                         [name](const Step& step) { return step.name == name; });
}

}  // namespace

void BeginChurn(Churn& churn) {
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

std::string Account(const Churn& churn) {
    std::string text = "the last steps:\n";
    for (const std::string& line : churn.journal) {
        text += "  " + line + "\n";
    }
    text += "the windows:\n" + Described(churn.model) + "the settings file: ";
    text += Printed(churn.settings.Bytes()) + "\nread as: " + Printed(churn.settings.Readable());
    return text;
}

}  // namespace morvane::test
