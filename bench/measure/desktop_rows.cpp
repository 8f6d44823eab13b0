#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "bare/bare_menu.h"
#include "bare/bare_pass.h"
#include "base/gui_owners.h"
#include "measure/rows.h"
#include "measure/scene.h"
#include "pin/candidates.h"
#include "pin/discovery.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "support/test_environment.h"
#include "support/window_state.h"
#include "ui/active_window.h"
#include "ui/menu_build.h"
#include "ui/menu_rows.h"

namespace morvane::bench {

namespace {

constexpr int EntryCount = 100;
constexpr std::size_t PinnedCount = 50;
constexpr std::size_t AllCount = 500;

std::vector<HWND> WindowsInPassOrder() {
    std::vector<MatchedWindow> matched = CollectMatchedWindows();
    std::sort(matched.begin(), matched.end(), HasLowerPriority);
    std::vector<HWND> windows;
    windows.reserve(matched.size());
    for (const MatchedWindow& match : matched) {
        windows.push_back(match.window);
    }
    return windows;
}

void MeasurePatterns(const Plan& plan) {
    constexpr std::array<int, 3> Counts = {1, 10, EntryCount};
    Announce("a pass with 1, 10 and 100 patterns");
    std::array<std::vector<double>, Counts.size()> times;
    for (int repetition = 0; repetition <= plan.repetitions; ++repetition) {
        for (std::size_t turn = 0; turn < Counts.size(); ++turn) {
            // Each round starts with a different one.
            const std::size_t which = (turn + static_cast<std::size_t>(repetition)) % Counts.size();
            BindEngine(UnmatchedEntries(Counts[which]));
            const double time = TimeOf(1, ApplyAll);
            if (repetition > 0) {
                times[which].push_back(time);
            }
        }
    }
    Emit("patterns", {{"1", times[0]}, {"10", times[1]}, {"100", times[2]}});
}

void MeasureUnmatched(const Plan& plan) {
    Announce("a pass over 500 windows, none matches");
    BindEngine(UnmatchedEntries(EntryCount));
    Require(CollectMatchedWindows().empty(), "no match");
    Emit("pass_none", MeasureInTurn(plan, 1, ApplyAll, [] { bare::LookAtWindows(); }));
}

void MeasureNearMisses(const Plan& plan) {
    Announce("a pass over 500 windows, near misses");
    std::vector<std::wstring> titles;
    for (int number = 0; number < EntryCount / 2; ++number) {
        titles.push_back(PlainTitle + std::to_wstring(number));
        titles.push_back(PinnedTitle + std::to_wstring(number));
    }
    BindEngine(NearMisses(titles, EntryCount));
    Require(Engine().pinList.entries.size() == EntryCount, "a full list");
    Require(CollectMatchedWindows().empty(), "no match");
    Emit("pass_near", MeasureInTurn(plan, 1, ApplyAll, [] { bare::LookAtWindows(); }));
}

void MeasureMatched(const Plan& plan) {
    Announce("a pass over 500 windows, 50 match");
    BindEngine(EntriesWithMatch(EntryCount));
    const std::vector<HWND> pinned = WindowsInPassOrder();
    std::array<HWND, 2 * PinnedCount> marked{};
    Require(pinned.size() == PinnedCount && bare::FindMarked(*PinnedTitle, marked) == PinnedCount,
            "50 matches");
    ApplyAll();
    Require(std::all_of(pinned.begin(), pinned.end(), test::IsTopmost), "50 windows pinned");
    Emit("pass_50",
         MeasureInTurn(plan, 1, ApplyAll, [&] { bare::LookAtAndPin({pinned, *PinnedTitle}); }));
    Emit("allocations_50", {{"allocations", {AllocationsOfPass()}}});
    ReleaseAll();
}

void MeasureMenu(const Plan& plan) {
    Announce("the menu of 500 windows");
    BindEngine(EntriesWithMatch(EntryCount));
    const std::wstring path = test::SettingsPath();
    const std::wstring folder = test::DataFolder();
    const auto ours = [] {
        ClearMenuRows();
        PrepareMenuState();
        const Menu menu = BuildTrayMenu();
        ClearMenuRows();
    };
    const auto bare = [&] { bare::BuildMenuOnce(path.c_str(), folder.c_str()); };
    PrepareMenuState();
    const Menu rows = BuildAddRemoveMenu();
    const Menu sized = BuildMinSizeMenu();
    const auto rowCount =
        static_cast<unsigned>(GetMenuItemCount(rows.get()) + GetMenuItemCount(sized.get()));
    Require(bare::BuildMenuOnce(path.c_str(), folder.c_str()) == rowCount, "as many rows");
    Emit("menu_500", MeasureInTurn(plan, 1, ours, bare));
}

}  // namespace

void MeasureDesktop(const Plan& plan) {
    test::Actor actor;
    Announce("opening 500 windows");
    static_cast<void>(AddWindows(actor, int{AllCount - PinnedCount}, PlainTitle));
    static_cast<void>(AddWindows(actor, int{PinnedCount}, PinnedTitle));
    MeasurePatterns(plan);
    MeasureUnmatched(plan);
    MeasureNearMisses(plan);
    MeasureMatched(plan);
    MeasureMenu(plan);
}

}  // namespace morvane::bench
