#include <algorithm>
#include <functional>
#include <string_view>
#include <vector>

#include "soak/steps.h"
#include "support/window_state.h"
#include "unit/printed.h"

namespace morvane::test {
namespace {

using namespace std::chrono_literals;

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

using Condition = std::function<bool(const ModelWindow&)>;

ModelWindow* AnyWindow(Churn& churn, const Condition& condition) {
    std::vector<ModelWindow*> fitting;
    for (ModelWindow& window : churn.model.windows) {
        if (condition(window)) {
            fitting.push_back(&window);
        }
    }
    return fitting.empty() ? nullptr : fitting[churn.generator.Below(fitting.size())];
}

Actor& ActorOf(Churn& churn, const ModelWindow& window) {
    return churn.actors.at(window.actor);
}

void NoteWindow(Churn& churn, const ModelWindow& window) {
    Note(churn, std::to_string(NumberFromWindow(window.window)) + " " +
                    Printed(window.title.substr(0, 30)));
}

void Strike(Churn& churn, HWND window) {
    std::erase_if(churn.model.windows,
                  [window](const ModelWindow& own) { return own.window == window; });
}

bool Appear(Churn& churn, std::string& /*wrong*/) {
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
    WindowSpec spec;
    if (window.isDialog) {
        spec.className = L"#32770";
    }
    spec.title = window.title;
    spec.exStyle = window.topmost ? WS_EX_TOPMOST : 0;
    spec.x = window.x;
    spec.y = window.y;
    spec.width = window.width;
    spec.height = window.height;
    window.window = ActorOf(churn, window).Create(spec);
    NoteWindow(churn, window);
    churn.model.windows.push_back(window);
    return true;
}

bool Vanish(Churn& churn, std::string& /*wrong*/) {
    ModelWindow* const window = AnyWindow(churn, [](const ModelWindow&) { return true; });
    if (window == nullptr || churn.model.windows.size() < 4) {
        return false;
    }
    NoteWindow(churn, *window);
    ActorOf(churn, *window).Destroy(window->window);
    Strike(churn, window->window);
    return true;
}

bool Rename(Churn& churn, std::string& /*wrong*/) {
    ModelWindow* const window = AnyWindow(churn, [](const ModelWindow&) { return true; });
    if (window == nullptr) {
        return false;
    }
    NoteWindow(churn, *window);
    window->title = AnyTitle(churn.generator);
    Note(churn, "to " + Printed(window->title.substr(0, 30)));
    ActorOf(churn, *window).SetTitle(window->window, window->title);
    return true;
}

bool Minimise(Churn& churn, std::string& /*wrong*/) {
    ModelWindow* const window = AnyWindow(
        churn, [](const ModelWindow& own) { return own.visible && !own.minimised && !own.owned; });
    if (window == nullptr) {
        return false;
    }
    NoteWindow(churn, *window);
    ActorOf(churn, *window).Minimise(window->window);
    window->minimised = true;
    return true;
}

bool Restore(Churn& churn, std::string& /*wrong*/) {
    ModelWindow* const window =
        AnyWindow(churn, [](const ModelWindow& own) { return own.minimised; });
    if (window == nullptr) {
        return false;
    }
    NoteWindow(churn, *window);
    ActorOf(churn, *window).Restore(window->window);
    window->minimised = false;
    return true;
}

// Every request shows the window, so a pass that met it just before it is hidden shows it again.
// That rarely happens, so hiding it again helps.
bool Hide(Churn& churn, std::string& wrong) {
    ModelWindow* const window =
        AnyWindow(churn, [](const ModelWindow& own) { return own.visible && !own.minimised; });
    if (window == nullptr) {
        return false;
    }
    NoteWindow(churn, *window);
    window->visible = false;
    for (int attempt = 0; attempt < HideAttempts; ++attempt) {
        ActorOf(churn, *window).Hide(window->window);
        churn.driver->RunPasses(1);
        if (IsWindowVisible(window->window) == FALSE) {
            return true;
        }
        ++churn.counts.repeatedChecks;
    }
    wrong = "  a hidden window keeps being shown\n";
    return true;
}

bool Show(Churn& churn, std::string& /*wrong*/) {
    ModelWindow* const window =
        AnyWindow(churn, [](const ModelWindow& own) { return !own.visible; });
    if (window == nullptr) {
        return false;
    }
    NoteWindow(churn, *window);
    ActorOf(churn, *window).Show(window->window, SW_SHOWNA);
    window->visible = true;
    return true;
}

bool ChangeOwner(Churn& churn, std::string& /*wrong*/) {
    ModelWindow* const window =
        AnyWindow(churn, [](const ModelWindow& own) { return !own.minimised; });
    if (window == nullptr) {
        return false;
    }
    NoteWindow(churn, *window);
    window->owned = !window->owned;
    ActorOf(churn, *window)
        .SetOwner(window->window, window->owned ? churn.owners.at(window->actor) : nullptr);
    return true;
}

// If there is a minimum, half of the lengths are close to it.
int AnyLength(Generator& generator, int minimum, int least, int most) {
    constexpr int Near = 2;
    if (minimum > 0 && generator.Below(2) == 0) {
        return std::clamp(minimum + generator.Between(-Near, Near), least, most);
    }
    return generator.Between(least, most);
}

// The entry that pins the window, or one without sizes.
PinEntry EntryOf(const Churn& churn, const ModelWindow& window) {
    const PinList& list = churn.model.list;
    const int index = PinningEntry(list, window);
    return index < 0 ? PinEntry{} : list.entries.at(static_cast<std::size_t>(index));
}

bool Resize(Churn& churn, std::string& /*wrong*/) {
    // Preferably one with a minimum size.
    ModelWindow* window = AnyWindow(churn, [&](const ModelWindow& own) {
        const PinEntry entry = EntryOf(churn, own);
        return !own.minimised && (entry.minWidth > 0 || entry.minHeight > 0);
    });
    if (window == nullptr) {
        window = AnyWindow(churn, [](const ModelWindow& own) { return !own.minimised; });
    }
    if (window == nullptr) {
        return false;
    }
    NoteWindow(churn, *window);
    const PinEntry entry = EntryOf(churn, *window);
    window->x = churn.generator.Between(0, MostLeft);
    window->y = churn.generator.Between(0, MostTop);
    window->width = AnyLength(churn.generator, entry.minWidth, LeastWidth, MostWidth);
    window->height = AnyLength(churn.generator, entry.minHeight, LeastHeight, MostHeight);
    ActorOf(churn, *window)
        .Place(window->window, window->x, window->y, window->width, window->height);
    return true;
}

// The system keeps an owned window above its owner, wherever that is, so the effect of its own
// requests cannot be predicted.
bool IsUnowned(const ModelWindow& window) {
    return !window.owned;
}

bool TurnTopmost(Churn& churn, std::string& /*wrong*/) {
    ModelWindow* const window = AnyWindow(churn, IsUnowned);
    if (window == nullptr) {
        return false;
    }
    NoteWindow(churn, *window);
    window->topmost = !window->topmost;
    ActorOf(churn, *window).SetTopmost(window->window, window->topmost);
    return true;
}

bool Raise(Churn& churn, std::string& /*wrong*/) {
    ModelWindow* const window = AnyWindow(churn, IsUnowned);
    if (window == nullptr) {
        return false;
    }
    NoteWindow(churn, *window);
    ActorOf(churn, *window).Raise(window->window);
    return true;
}

bool Hang(Churn& churn, std::string& /*wrong*/) {
    const std::size_t actor = churn.generator.Below(Churn::ActorCount);
    Note(churn, "of process " + std::to_string(actor));
    churn.actors.at(actor).Hang(HangTime);
    ++churn.counts.hangs;
    return true;
}

// The window dies while it handles a pass's request; the pass goes on with the others.
bool DieInAPass(Churn& churn, std::string& wrong) {
    ModelWindow* const window = AnyWindow(churn, [&](const ModelWindow& own) {
        return churn.model.list.pinning && PinningEntry(churn.model.list, own) >= 0;
    });
    if (window == nullptr || churn.model.windows.size() < 4) {
        return false;
    }
    NoteWindow(churn, *window);
    const HWND dying = window->window;
    ActorOf(churn, *window).DieOnRequest(dying, 1);
    Strike(churn, dying);
    churn.driver->RunPasses(1);
    if (IsWindow(dying) != FALSE) {
        wrong = "  a pass made no request to a pinned window\n";
    }
    return true;
}

// Every pass repeats its request to every matching window.
bool CountRequests(Churn& churn, std::string& wrong) {
    constexpr std::size_t Passes = 10;
    ModelWindow* const window = AnyWindow(churn, [&](const ModelWindow& own) {
        return churn.model.list.pinning && PinningEntry(churn.model.list, own) >= 0;
    });
    if (window == nullptr) {
        return false;
    }
    NoteWindow(churn, *window);
    Actor& actor = ActorOf(churn, *window);
    const ULONGLONG start = GetTickCount64();
    actor.ForgetRecords(window->window);
    churn.driver->RunPasses(static_cast<int>(Passes));
    const std::vector<PositionRequest> requests = actor.Requests(window->window);
    // One more, since a pass due earlier may come late.
    const std::size_t timedPasses = (GetTickCount64() - start) / TimerInterval + 1;
    const auto count = static_cast<std::size_t>(
        std::count_if(requests.begin(), requests.end(), [](const PositionRequest& request) {
            return request.insertAfter == HWND_TOPMOST && (request.flags & SWP_NOZORDER) == 0;
        }));
    if (count < Passes || count > Passes + timedPasses) {
        wrong = "  " + std::to_string(Passes) + " passes made " + std::to_string(count) +
                " requests to a window; the program's own timer can add no more than " +
                std::to_string(timedPasses) + "\n";
    }
    return true;
}

}  // namespace

const Step WindowSteps[WindowStepCount] = {
    {"appear", 60, Appear},
    {"vanish", 40, Vanish},
    {"rename", 100, Rename},
    {"minimise", 30, Minimise},
    {"restore", 30, Restore},
    {"hide", 30, Hide},
    {"show", 40, Show},
    {"change owner", 40, ChangeOwner},
    {"resize", 50, Resize},
    {"turn topmost or ordinary", 60, TurnTopmost},
    {"raise", 40, Raise},
    {"hang", 2, Hang},
    {"die in a pass", 10, DieInAPass},
    {"count requests", 10, CountRequests},
};

}  // namespace morvane::test
