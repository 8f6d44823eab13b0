#include "pin/discovery.h"

#include <algorithm>
#include <cstdint>

#include "pin/engine.h"
#include "pin/identity.h"
#include "pin/window_query.h"
#include "settings/text.h"

namespace morvane {
namespace {

constexpr std::wstring_view StandardDialogClass = L"#32770";

// English and Japanese forms.
constexpr std::wstring_view ProtectedTitleList[] = {
    L"User Account Control", L"Windows Security", L"Windows セキュリティ",
    L"Credential",           L"資格情報",         L"Consent UI",
};

}  // namespace

bool IsOwnWindow(HWND window, std::wstring_view className) {
    const PinEngine& engine = Engine();
    // Equal even if both are empty: without a class of our own, an unreadable class may be ours.
    return className == engine.ownClassName || window == engine.ownWindow;
}

bool IsProtectedSystemDialog(std::wstring_view title, std::wstring_view className) {
    return EqualsIgnoreCase(className, StandardDialogClass) &&
           std::ranges::any_of(ProtectedTitleList,
                               [&](auto text) { return PatternMatches(title, text); });
}

// Tool windows, minimised windows and those on other virtual desktops are pinned like any other.
bool IsEligibleWindow(HWND window) {
    if (IsWindowVisible(window) == FALSE || HasOwner(window)) {
        return false;
    }
    const WindowClassName className = ReadClassName(window);
    if (IsOwnWindow(window, className.View())) {
        return false;
    }
    // An untitled window belongs to no entry.
    const WindowTitle title = ReadTitle(window);
    return !IsProtectedSystemDialog(title.View(), className.View()) &&
           IsPinnedTitle(Engine().pinList, title.View());
}

bool HasLowerPriority(const MatchedWindow& a, const MatchedWindow& b) {
    if (a.entryIndex != b.entryIndex) {
        return a.entryIndex > b.entryIndex;
    }
    return reinterpret_cast<std::uintptr_t>(a.window) < reinterpret_cast<std::uintptr_t>(b.window);
}

std::vector<MatchedWindow> CollectMatchedWindows() {
    std::vector<MatchedWindow> matched;
    ForEachTopLevelWindow([&](HWND window) {
        if (!IsEligibleWindow(window)) {
            return;
        }
        // Read again: a title that has changed since the test counts as it is now.
        const WindowTitle title = ReadTitle(window);
        const std::int32_t index = FindBestEntryIndex(Engine().pinList, title.View());
        if (index != NoEntry) {
            matched.push_back({window, index});
        }
    });
    return matched;
}

}  // namespace morvane
