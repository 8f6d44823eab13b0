// Passes and the menu, over the windows of another process.

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "bare/loops.h"
#include "base/gui_owners.h"
#include "measure/bench.h"
#include "pin/discovery.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "support/window_state.h"
#include "ui/active_window.h"
#include "ui/menu_build.h"
#include "ui/menu_rows.h"

namespace morvane::bench {
namespace {

constexpr int AllCount = 500;
constexpr int PinnedCount = 50;
static_assert(*PinnedTitle == bare::PinnedMark && *PlainTitle != bare::PinnedMark);

void MeasurePasses(const Plan& plan, std::vector<HWND> pinned) {
    Announce("a pass over 500 windows");
    BindEngine(UnmatchedEntries());
    Require(CollectMatchedWindows().empty(), "no match");
    Emit("pass_none", InTurn(plan.repetitions, TimeOf(ApplyAll), TimeOf(bare::LookAtWindows)));

    BindEngine(EntriesWithMatch());
    Require(CollectMatchedWindows().size() == pinned.size(), "50 matches");
    ApplyAll();
    Require(std::all_of(pinned.begin(), pinned.end(), test::IsTopmost), "50 windows pinned");
    // The order of a pass.
    std::sort(pinned.begin(), pinned.end(), std::less<>());
    Emit("pass_50",
         InTurn(plan.repetitions, TimeOf(ApplyAll), TimeOf([&] { bare::LookAtAndPin(pinned); })));
    ReleaseAll();
}

void MeasureMenu(const Plan& plan) {
    Announce("the menu of 500 windows");
    PrepareMenuState();
    const Menu rows = BuildAddRemoveMenu();
    const Menu sized = BuildMinSizeMenu();
    Require(bare::BuildMenuOnce() ==
                static_cast<unsigned>(GetMenuItemCount(rows.get()) + GetMenuItemCount(sized.get())),
            "as many rows");
    const auto ours = [] {
        ClearMenuRows();
        PrepareMenuState();
        const Menu menu = BuildTrayMenu();
        ClearMenuRows();
    };
    Emit("menu_500", InTurn(plan.repetitions, TimeOf(ours), TimeOf(bare::BuildMenuOnce)));
}

void Append(std::vector<double>& all, const std::vector<double>& more) {
    all.insert(all.end(), more.begin(), more.end());
}

}  // namespace

void MeasureDesktop(const Plan& plan) {
    test::Actor actor;
    Announce("opening 500 windows");
    static_cast<void>(AddWindows(actor, int{AllCount - PinnedCount}, PlainTitle));
    MeasurePasses(plan, AddWindows(actor, int{PinnedCount}, PinnedTitle));
    MeasureMenu(plan);
}

void MeasureGrowth(const Plan& plan) {
    // Several rounds, so that a temporary disturbance affects some times for every number of
    // windows instead of all times for one.
    constexpr int Rounds = 3;
    BindEngine(UnmatchedEntries());
    std::map<int, Pairs> times;
    for (int round = 0; round < Rounds; ++round) {
        test::Actor actor;
        int opened = 0;
        for (const int count : {50, 100, 200, 400, 800}) {
            Announce("a pass over " + std::to_string(count) + " windows");
            static_cast<void>(AddWindows(actor, count - opened, PlainTitle));
            opened = count;
            const Pairs more = InTurn((plan.repetitions + Rounds - 1) / Rounds, TimeOf(ApplyAll),
                                      TimeOf(bare::LookAtWindows));
            Append(times[count].ours, more.ours);
            Append(times[count].bare, more.bare);
        }
    }
    for (const auto& [count, pairs] : times) {
        Emit("windows_" + std::to_string(count), pairs);
    }
}

}  // namespace morvane::bench
