#include "soak/churn.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "soak/steps.h"
#include "support/printed.h"
#include "support/settings_reference.h"
#include "support/test_environment.h"

namespace morvane::test {
namespace {

constexpr std::size_t JournalLength = 30;
constexpr std::uint64_t ForgetInterval = 10;  // steps
constexpr int FirstWindows = 6;
constexpr int MostWaits = 3;  // for a moment between two passes

// So many times in a run, and once more per so many steps.
struct Allowance {
    std::uint64_t times;
    std::uint64_t stepsPerMore;
};
constexpr Allowance SecondLooks{8, 2'000};
constexpr Allowance Waits{8, 200};
constexpr Allowance WrongOrders{4, 5'000};

// One pass would do for the program, but passes are cheap and checks are not.
constexpr int PassCounts[] = {1, 1, 2, 3, 5, 8, 12, 20, 30};

// Each step as often as its weight.
std::vector<Step> WeightedSteps() {
    std::vector<Step> steps;
    for (const Step& step : WindowSteps) {
        steps.insert(steps.end(), step.weight, step);
    }
    for (const Step& step : ProgramSteps) {
        steps.insert(steps.end(), step.weight, step);
    }
    return steps;
}

bool IsExceeded(const Allowance& allowance, std::uint64_t times, const Churn& churn) {
    return times > allowance.times + churn.counts.steps / allowance.stepsPerMore;
}

// A look can fall into a pass of the program's own timer, which has raised one window but not yet
// the one above it. A real difference is still there when no pass is running.
std::string LookTwice(Churn& churn, std::string (*look)(const Model&)) {
    std::string difference = look(churn.model);
    if (difference.empty()) {
        return difference;
    }
    ++churn.counts.secondLooks;
    churn.driver->WaitForQueue();
    return look(churn.model);
}

// The windows record every request, which would fill the memory of their processes.
void ForgetRecords(Churn& churn) {
    for (const ModelWindow& window : churn.model.windows) {
        churn.actors.at(window.actor).ForgetRecords(window.window);
    }
}

struct Raise {
    LONGLONG time;
    HWND window;
};

// The requests of the program that have raised its pinned windows, oldest first.
std::vector<Raise> Raises(Churn& churn) {
    std::vector<Raise> raises;
    for (const HWND window : churn.model.expected) {
        for (const PositionRequest& request :
             RaisesOf(churn, *FindModelWindow(churn.model, window))) {
            raises.push_back({request.counter, window});
        }
    }
    std::ranges::sort(raises, {}, &Raise::time);
    return raises;
}

// Those of whole passes only. The queue is served between two passes, so none was running at some
// moment of the wait if no window was raised during it. Later ones may be part of a pass that runs
// while one window after the other is asked.
std::vector<Raise> RaisesOfWholePasses(Churn& churn) {
    for (int wait = 0; wait < MostWaits; ++wait) {
        churn.counts.waits += wait > 0 ? 1 : 0;
        const LONGLONG before = CounterNow();
        churn.driver->WaitForQueue();
        const LONGLONG after = CounterNow();
        std::vector<Raise> raises = Raises(churn);
        std::erase_if(raises, [after](const Raise& raise) { return raise.time > after; });
        if (raises.empty() || raises.back().time < before) {
            return raises;
        }
    }
    return {};
}

// Each pass raises every pinned window once, the highest last.
std::string RaiseDifference(Churn& churn) {
    const std::vector<HWND>& expected = churn.model.expected;
    const std::vector<Raise> raises = RaisesOfWholePasses(churn);
    const std::size_t judged = expected.size() * churn.lastPasses;
    if (raises.size() < judged) {
        return "  the last passes raised too few windows\n";
    }
    for (std::size_t age = 0; age < judged; ++age) {
        if (raises[raises.size() - 1 - age].window != expected[age % expected.size()]) {
            return "  the last passes raised the windows in the wrong order\n";
        }
    }
    return {};
}

// The program's own requests have the flags 83 and 84.
std::string LastRequests(Churn& churn) {
    constexpr std::size_t Enough = 6;
    std::string text;
    for (const ModelWindow& window : churn.model.windows) {
        const std::vector<PositionRequest> requests =
            churn.actors.at(window.actor).Requests(window.window);
        text += "  " + NameOf(window.window) + ":";
        for (std::size_t age = std::min(requests.size(), Enough); age > 0; --age) {
            const PositionRequest& request = requests[requests.size() - age];
            text += " " + std::to_string(request.counter) + " after " +
                    NameOf(request.insertAfter) + " flags " + std::to_string(request.flags) + ";";
        }
        text += "\n";
    }
    return text;
}

}  // namespace

std::vector<PositionRequest> RaisesOf(Churn& churn, const ModelWindow& window) {
    constexpr UINT RaiseFlags = SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE | SWP_SHOWWINDOW;
    std::vector<PositionRequest> requests = churn.actors.at(window.actor).Requests(window.window);
    std::erase_if(requests, [](const PositionRequest& request) {
        return request.insertAfter != HWND_TOPMOST || request.flags != RaiseFlags;
    });
    return requests;
}

// The order may come out wrong though every request is right. The system raises a window when it
// activates it, shortly after another window or a menu is gone, and this can fall into the last
// pass. Once in several thousand steps on a busy machine, an order has also been seen under
// Wine 8.0 that stayed wrong.
std::string CheckModel(Churn& churn) {
    const std::string windows = LookTwice(churn, WindowDifferences);
    const std::string order = LookTwice(churn, OrderDifference);
    const std::string wrong = windows + RaiseDifference(churn);
    if (!wrong.empty()) {
        return wrong + order;
    }
    if (IsExceeded(SecondLooks, churn.counts.secondLooks, churn)) {
        return "  too many second looks were needed\n";
    }
    if (IsExceeded(Waits, churn.counts.waits, churn)) {
        return "  too often a pass was running when the requests were to be judged\n";
    }
    return !order.empty() && IsExceeded(WrongOrders, ++churn.counts.wrongOrders, churn)
               ? order + "  and too many orders came out wrong\n"
               : "";
}

void BeginChurn(Churn& churn) {
    // cppcheck-suppress constVariable ; what it creates changes it
    for (Actor& actor : churn.actors) {
        churn.owners.push_back(actor.Create({.title = L"", .visible = false}));
    }
    churn.journal.emplace_back("the first windows:");
    churn.settings.ExpectSaved({true, {}});
    for (int window = 0; window < FirstWindows; ++window) {
        Appear(churn);
    }
    // What these load stays loaded, and must not pass for growth.
    churn.driver->OpenMenu();
    churn.driver->CloseMenu();
    churn.driver->OpenAbout();
    churn.driver->CloseAbout();
    RunPasses(churn, 1);
}

void RunPasses(Churn& churn, int count) {
    churn.driver->RunPasses(count);
    churn.lastPasses = static_cast<std::size_t>(count);
    RunModelPass(churn.model, churn.settings.Readable());
}

std::string RunStep(Churn& churn) {
    static const std::vector<Step> steps = WeightedSteps();
    const std::string number = "step " + std::to_string(churn.counts.steps) + ": ";
    churn.journal.emplace_back();
    const Step* step = nullptr;
    do {
        step = &churn.generator.OneOf(steps);
        churn.journal.back() = number + step->name;
    } while (!step->run(churn));
    if (!churn.wrong.empty()) {
        return churn.wrong;
    }
    const int passes = churn.generator.OneOf(PassCounts);
    RunPasses(churn, passes);
    Note(churn, "; " + std::to_string(passes) + " passes");
    if (churn.journal.size() > JournalLength) {
        churn.journal.pop_front();
    }
    ++churn.counts.steps;
    std::string wrong = CheckModel(churn);
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

std::string Account(Churn& churn) {
    std::string text = "the last steps:\n";
    for (const std::string& line : churn.journal) {
        text += "  " + line + "\n";
    }
    return text + "the windows:\n" + Described(churn.model) +
           "the last requests that reached them, with their time in ticks of the performance "
           "counter:\n" +
           LastRequests(churn) + "the settings file: " + Printed(churn.settings.Bytes()) +
           "\nread as: " + Printed(churn.settings.Readable());
}

}  // namespace morvane::test
