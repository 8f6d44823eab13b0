#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "soak/steps.h"
#include "support/printed.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t FewestWindows = 3;
constexpr std::size_t MostWindows = 10;
constexpr int HideAttempts = 4;
constexpr auto HangTime = 1000ms;
constexpr ULONGLONG TimerInterval = 500;  // milliseconds between the program's own passes

// Within the screen, and no larger than a window can be on it.
constexpr int MostLeft = 600;
constexpr int MostTop = 250;
constexpr int LeastWidth = 150;
constexpr int MostWidth = 600;
constexpr int LeastHeight = 100;
constexpr int MostHeight = 500;

std::wstring AnyTitle(Generator& generator) {
    static const std::wstring longerThanIsRead = std::wstring(505, L'x') + L" Notepad";
    constexpr std::wstring_view Words[] = {
        L"Alpha",
        L"alpha notes",
        L"BETA",
        L"Beta - Notepad",
        L"notepad",
        L"Gamma",
        L"User Account Control",
        L"Consent UI",
        L"Windows Security",
        L"Windows \u30BB\u30AD\u30E5\u30EA\u30C6\u30A3",
        L"\u8CC7\u683C\u60C5\u5831",
        L"#general",
        L"\u00DCber",
        L"\u00FCber",
        L"Delta\tx",
        L"Report 300 2",
        L"credential",
    };
    switch (generator.Below(12)) {
        case 0:
            return {};
        case 1:
            return longerThanIsRead;
        case 2:
            return std::wstring(generator.OneOf(Words)) + L" " +
                   std::wstring(generator.OneOf(Words));
        default:
            return std::wstring(generator.OneOf(Words));
    }
}

Actor& ActorOf(Churn& churn, const ModelWindow& window) {
    return churn.actors.at(window.actor);
}

// A step that changes any window for which the condition holds, if there is one.
template <bool (*Fits)(const Churn&, const ModelWindow&), void (*Change)(Churn&, ModelWindow&)>
bool OnAnyWindow(Churn& churn) {
    std::vector<ModelWindow*> fitting;
    for (ModelWindow& window : churn.model.windows) {
        if (Fits(churn, window)) {
            fitting.push_back(&window);
        }
    }
    if (fitting.empty()) {
        return false;
    }
    ModelWindow& window = *fitting[churn.generator.Below(fitting.size())];
    Note(churn, NameOf(window.window) + " " + Printed(window.title.substr(0, 30)));
    Change(churn, window);
    return true;
}

bool IsAny(const Churn& /*churn*/, const ModelWindow& /*window*/) {
    return true;
}

bool IsMinimised(const Churn& /*churn*/, const ModelWindow& window) {
    return window.minimised;
}

bool IsRestored(const Churn& /*churn*/, const ModelWindow& window) {
    return !window.minimised;
}

bool IsHidden(const Churn& /*churn*/, const ModelWindow& window) {
    return !window.visible;
}

bool CanBeHidden(const Churn& /*churn*/, const ModelWindow& window) {
    return window.visible && !window.minimised;
}

bool CanBeMinimised(const Churn& churn, const ModelWindow& window) {
    return CanBeHidden(churn, window) && !window.owned;
}

// The system keeps an owned window above its owner, wherever that is, so the effect of its own
// requests cannot be predicted.
bool IsUnowned(const Churn& /*churn*/, const ModelWindow& window) {
    return !window.owned;
}

bool IsPinned(const Churn& churn, const ModelWindow& window) {
    return churn.model.list.pinning && PinningEntry(churn.model.list, window) >= 0;
}

bool CanBeMissed(const Churn& churn, const ModelWindow& /*window*/) {
    return churn.model.windows.size() > FewestWindows;
}

bool IsPinnedAndCanBeMissed(const Churn& churn, const ModelWindow& window) {
    return IsPinned(churn, window) && CanBeMissed(churn, window);
}

// The entry that pins the window, or one without sizes.
PinEntry EntryOf(const Churn& churn, const ModelWindow& window) {
    const PinList& list = churn.model.list;
    const int index = PinningEntry(list, window);
    return index < 0 ? PinEntry{} : list.entries.at(static_cast<std::size_t>(index));
}

bool HasMinimum(const Churn& churn, const ModelWindow& window) {
    const PinEntry entry = EntryOf(churn, window);
    return !window.minimised && (entry.minWidth > 0 || entry.minHeight > 0);
}

void Strike(Churn& churn, HWND window) {
    std::erase_if(churn.model.windows,
                  [window](const ModelWindow& own) { return own.window == window; });
}

void Vanish(Churn& churn, ModelWindow& window) {
    ActorOf(churn, window).Destroy(window.window);
    Strike(churn, window.window);
}

void Rename(Churn& churn, ModelWindow& window) {
    window.title = AnyTitle(churn.generator);
    Note(churn, "to " + Printed(window.title.substr(0, 30)));
    ActorOf(churn, window).SetTitle(window.window, window.title);
}

// While the menu's own message loop runs.
void RenameUnderTheMenu(Churn& churn, ModelWindow& window) {
    churn.driver->OpenMenu();
    Rename(churn, window);
    RunPasses(churn, 1);
    churn.wrong = CheckModel(churn);
    churn.driver->CloseMenu();
    ++churn.counts.menus;
}

void Minimise(Churn& churn, ModelWindow& window) {
    ActorOf(churn, window).Minimise(window.window);
    window.minimised = true;
}

void Restore(Churn& churn, ModelWindow& window) {
    ActorOf(churn, window).Restore(window.window);
    window.minimised = false;
}

// Every request shows the window, so a pass that met it just before it is hidden shows it again.
// That rarely happens, so hiding it again helps.
void Hide(Churn& churn, ModelWindow& window) {
    window.visible = false;
    for (int attempt = 0; attempt < HideAttempts; ++attempt) {
        ActorOf(churn, window).Hide(window.window);
        churn.driver->RunPasses(1);
        if (IsWindowVisible(window.window) == FALSE) {
            return;
        }
        ++churn.counts.secondLooks;
    }
    churn.wrong = "  a hidden window keeps being shown\n";
}

void Show(Churn& churn, ModelWindow& window) {
    ActorOf(churn, window).Show(window.window, SW_SHOWNA);
    window.visible = true;
}

void ChangeOwner(Churn& churn, ModelWindow& window) {
    window.owned = !window.owned;
    ActorOf(churn, window)
        .SetOwner(window.window, window.owned ? churn.owners.at(window.actor) : nullptr);
}

// If there is a minimum, half of the lengths are close to it.
int AnyLength(Generator& generator, int minimum, int least, int most) {
    constexpr int Near = 2;
    if (minimum > 0 && generator.Below(2) == 0) {
        return std::clamp(minimum + generator.Between(-Near, Near), least, most);
    }
    return generator.Between(least, most);
}

void Resize(Churn& churn, ModelWindow& window) {
    const PinEntry entry = EntryOf(churn, window);
    window.x = churn.generator.Between(0, MostLeft);
    window.y = churn.generator.Between(0, MostTop);
    window.width = AnyLength(churn.generator, entry.minWidth, LeastWidth, MostWidth);
    window.height = AnyLength(churn.generator, entry.minHeight, LeastHeight, MostHeight);
    ActorOf(churn, window).Place(window.window, window.x, window.y, window.width, window.height);
}

// Preferably one with a minimum size.
bool ResizeAny(Churn& churn) {
    return OnAnyWindow<HasMinimum, Resize>(churn) || OnAnyWindow<IsRestored, Resize>(churn);
}

void TurnTopmost(Churn& churn, ModelWindow& window) {
    window.topmost = !window.topmost;
    ActorOf(churn, window).SetTopmost(window.window, window.topmost);
}

void BringUp(Churn& churn, ModelWindow& window) {
    ActorOf(churn, window).Raise(window.window);
}

bool Hang(Churn& churn) {
    const std::size_t actor = churn.generator.Below(Churn::ActorCount);
    Note(churn, "of process " + std::to_string(actor));
    churn.actors.at(actor).Hang(HangTime);
    ++churn.counts.hangs;
    return true;
}

// The window dies while it handles a pass's request; the pass goes on with the others.
void DieInAPass(Churn& churn, ModelWindow& window) {
    const HWND dying = window.window;
    ActorOf(churn, window).DieOnRequest(dying, 1);
    Strike(churn, dying);
    churn.driver->RunPasses(1);
    if (IsWindow(dying) != FALSE) {
        churn.wrong = "  a pass made no request to a pinned window\n";
    }
}

// Every pass repeats its request to every matching window.
void CountRequests(Churn& churn, ModelWindow& window) {
    constexpr std::size_t Passes = 10;
    const ULONGLONG start = GetTickCount64();
    ActorOf(churn, window).ForgetRecords(window.window);
    churn.driver->RunPasses(static_cast<int>(Passes));
    const std::size_t count = RaisesOf(churn, window).size();
    // One more, since a pass due earlier may come late.
    const std::size_t timedPasses = (GetTickCount64() - start) / TimerInterval + 1;
    if (count < Passes || count > Passes + timedPasses) {
        churn.wrong = "  " + std::to_string(Passes) + " passes made " + std::to_string(count) +
                      " requests to a window; the program's own timer can add no more than " +
                      std::to_string(timedPasses) + "\n";
    }
}

}  // namespace

bool Appear(Churn& churn) {
    if (churn.model.windows.size() >= MostWindows) {
        return false;
    }
    Generator& generator = churn.generator;
    ModelWindow window;
    window.actor = generator.Below(Churn::ActorCount);
    window.title = AnyTitle(generator);
    window.isDialog = generator.Below(4) == 0;
    window.topmost = generator.Below(6) == 0;
    window.x = generator.Between(0, MostLeft);
    window.y = generator.Between(0, MostTop);
    window.width = generator.Between(LeastWidth, MostWidth);
    window.height = generator.Between(LeastHeight, MostHeight);
    const DWORD exStyle = window.topmost ? WS_EX_TOPMOST : 0;
    window.window = ActorOf(churn, window)
                        .Create({.className = window.isDialog ? L"#32770" : WindowSpec().className,
                                 .title = window.title,
                                 .exStyle = exStyle,
                                 .x = window.x,
                                 .y = window.y,
                                 .width = window.width,
                                 .height = window.height});
    Note(churn, NameOf(window.window) + " " + Printed(window.title.substr(0, 30)));
    churn.model.windows.push_back(window);
    return true;
}

const Step WindowSteps[WindowStepCount] = {
    {"appear", 60, Appear},
    {"vanish", 40, OnAnyWindow<CanBeMissed, Vanish>},
    {"rename", 100, OnAnyWindow<IsAny, Rename>},
    {"rename under the menu", 10, OnAnyWindow<IsAny, RenameUnderTheMenu>},
    {"minimise", 30, OnAnyWindow<CanBeMinimised, Minimise>},
    {"restore", 30, OnAnyWindow<IsMinimised, Restore>},
    {"hide", 30, OnAnyWindow<CanBeHidden, Hide>},
    {"show", 40, OnAnyWindow<IsHidden, Show>},
    {"change owner", 40, OnAnyWindow<IsRestored, ChangeOwner>},
    {"resize", 50, ResizeAny},
    {"turn topmost or ordinary", 60, OnAnyWindow<IsUnowned, TurnTopmost>},
    {"raise", 40, OnAnyWindow<IsUnowned, BringUp>},
    {"hang", 2, Hang},
    {"die in a pass", 10, OnAnyWindow<IsPinnedAndCanBeMissed, DieInAPass>},
    {"count requests", 10, OnAnyWindow<IsPinned, CountRequests>},
};

}  // namespace morvane::test
