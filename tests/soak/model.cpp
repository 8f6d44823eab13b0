#include "soak/model.h"

#include <algorithm>
#include <cstdint>

#include "support/actor_protocol.h"
#include "support/printed.h"
#include "support/settings_reference.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

constexpr const wchar_t* ProtectedTitles[] = {
    L"User Account Control",
    L"Windows Security",
    L"Windows \u30BB\u30AD\u30E5\u30EA\u30C6\u30A3",
    L"Credential",
    L"\u8CC7\u683C\u60C5\u5831",
    L"Consent UI",
};

bool IsProtected(const ModelWindow& window) {
    return window.isDialog &&
           std::any_of(std::begin(ProtectedTitles), std::end(ProtectedTitles),
                       [&](const wchar_t* text) {
                           return ReferenceMatches(SeenTitle(window.title), text);
                       });
}

struct Match {
    HWND window;
    int entry;
};

// Whether the first match ends up above the second.
bool IsHigher(const Match& a, const Match& b) {
    if (a.entry != b.entry) {
        return a.entry < b.entry;
    }
    return reinterpret_cast<std::uintptr_t>(a.window) > reinterpret_cast<std::uintptr_t>(b.window);
}

void Forget(Model& model) {
    std::set<HWND> kept;
    for (const ModelWindow& window : model.windows) {
        if (model.remembered.contains(window.window) && PinningEntry(model.list, window) >= 0) {
            kept.insert(window.window);
        }
    }
    model.remembered = kept;
}

// A window that grows keeps its top left corner.
void Pin(ModelWindow& window, const PinEntry& entry) {
    if (!window.minimised) {
        window.width = std::max(window.width, entry.minWidth);
        window.height = std::max(window.height, entry.minHeight);
    }
    window.topmost = true;
}

std::string PlaceText(int x, int y, int width, int height) {
    return ", " + std::to_string(width) + " x " + std::to_string(height) + " at (" +
           std::to_string(x) + ", " + std::to_string(y) + ")";
}

std::string Look(bool topmost, bool visible, bool minimised, const std::string& place) {
    return std::string(topmost ? "topmost" : "ordinary") + (visible ? "" : ", hidden") +
           (minimised ? ", minimised" : place);
}

std::string ExpectedLook(const ModelWindow& window) {
    return Look(window.topmost, window.visible, window.minimised,
                PlaceText(window.x, window.y, window.width, window.height));
}

std::string ActualLook(HWND window) {
    if (IsWindow(window) == FALSE) {
        return "gone";
    }
    const RECT rect = WindowRect(window);
    return Look(IsTopmost(window), IsWindowVisible(window) != FALSE, IsIconic(window) != FALSE,
                PlaceText(rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top));
}

// Our windows from the highest to the lowest.
std::vector<HWND> ActualOrder(const Model& model) {
    std::vector<HWND> order;
    for (const HWND window : TopLevelWindows()) {
        const auto known = [window](const ModelWindow& own) { return own.window == window; };
        if (std::any_of(model.windows.begin(), model.windows.end(), known)) {
            order.push_back(window);
        }
    }
    return order;
}

std::string OrderText(const std::vector<HWND>& order) {
    std::string text;
    for (const HWND window : order) {
        text += " " + NameOf(window);
    }
    return text;
}

}  // namespace

std::string NameOf(HWND window) {
    return std::to_string(NumberFromWindow(window));
}

int PinningEntry(const PinList& list, const ModelWindow& window) {
    if (!window.visible || window.owned || window.title.empty() || IsProtected(window)) {
        return -1;
    }
    return ReferenceBestEntry(list, SeenTitle(window.title));
}

void RunModelPass(Model& model, const PinList& found) {
    model.list = found;
    model.expected.clear();
    if (!found.pinning) {
        ReleaseModel(model);
        return;
    }
    Forget(model);
    std::vector<Match> matches;
    for (ModelWindow& window : model.windows) {
        const int entry = PinningEntry(found, window);
        if (entry >= 0) {
            matches.push_back({window.window, entry});
            Pin(window, found.entries.at(static_cast<std::size_t>(entry)));
            model.remembered.insert(window.window);
        }
    }
    std::sort(matches.begin(), matches.end(), IsHigher);
    for (const Match& match : matches) {
        model.expected.push_back(match.window);
    }
}

void ReleaseModel(Model& model) {
    for (ModelWindow& window : model.windows) {
        if (model.remembered.contains(window.window)) {
            window.topmost = false;
            window.visible = true;
        }
    }
    model.remembered.clear();
    model.expected.clear();
}

ModelWindow* FindModelWindow(Model& model, HWND window) {
    const auto found = std::find_if(model.windows.begin(), model.windows.end(),
                                    [&](const ModelWindow& own) { return own.window == window; });
    return found == model.windows.end() ? nullptr : &*found;
}

std::string WindowDifferences(const Model& model) {
    std::string differences;
    for (const ModelWindow& window : model.windows) {
        const std::string expected = ExpectedLook(window);
        const std::string actual = ActualLook(window.window);
        if (actual != expected) {
            differences.append("  window ").append(NameOf(window.window));
            differences.append(" is ").append(actual).append(" instead of ");
            differences.append(expected).append("\n");
        }
    }
    return differences;
}

std::string OrderDifference(const Model& model) {
    std::vector<HWND> order = ActualOrder(model);
    // The order of all other windows is not specified.
    order.resize(std::min(order.size(), model.expected.size()));
    return order == model.expected ? ""
                                   : "  the order is" + OrderText(order) + " instead of" +
                                         OrderText(model.expected) + "\n";
}

std::string Described(const Model& model) {
    std::string text;
    for (const ModelWindow& window : model.windows) {
        std::string title = Printed(window.title);
        constexpr std::size_t Enough = 60;
        if (title.size() > Enough) {
            title.resize(Enough);
            title += "...";
        }
        text += "  " + NameOf(window.window) + " " + title + (window.isDialog ? " dialog" : "") +
                (window.owned ? " owned" : "") + ", entry " +
                std::to_string(PinningEntry(model.list, window)) +
                (model.remembered.contains(window.window) ? ", remembered" : "") + ", owner " +
                NameOf(GetWindow(window.window, GW_OWNER)) + "\n      expected " +
                ExpectedLook(window) + "; is " + ActualLook(window.window) + "\n";
    }
    text += "  the order is" + OrderText(ActualOrder(model)) + "\n";
    return text;
}

}  // namespace morvane::test
