#include "pin/discovery.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "pin/engine.h"
#include "pin/identity.h"
#include "pin/window_query.h"
#include "settings/text.h"

namespace morvane {

namespace {

constexpr std::wstring_view StandardDialogClass = L"#32770";

// English and Japanese forms.
constexpr std::array<std::wstring_view, 6> ProtectedTitleList = {
    L"User Account Control", L"Windows Security", L"Windows セキュリティ",
    L"Credential",           L"資格情報",         L"Consent UI",
};

}  // namespace

bool IsOwnWindow(HWND window, std::wstring_view className) {
    const PinEngine& engine = Engine();
    // Two empty names count as equal too: a window whose class cannot be read is left alone as long
    // as the engine has no class of its own.
    return className == engine.ownClassName || window == engine.ownWindow;
}

bool IsProtectedSystemDialog(std::wstring_view title, std::wstring_view className) {
    return EqualsIgnoreCase(className, StandardDialogClass) &&
           std::any_of(ProtectedTitleList.begin(), ProtectedTitleList.end(),
                       [&](std::wstring_view text) { return PatternMatches(title, text); });
}

// Nothing else is asked: tool windows, windows on other desktops and minimised ones are pinned like
// any other when a pattern names them.
bool IsEligibleWindow(HWND window) {
    if (IsWindowVisible(window) == FALSE || HasOwner(window)) {
        return false;
    }
    const WindowClassName className = ReadClassName(window);
    if (IsOwnWindow(window, className.View())) {
        return false;
    }
    const WindowTitle title = ReadTitle(window);
    return title.length > 0 && !IsProtectedSystemDialog(title.View(), className.View()) &&
           FindBestEntry(Engine().pinList, title.View()) != nullptr;
}

bool IsPinnedBefore(const MatchedWindow& a, const MatchedWindow& b) {
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
        // Read again: a title that has changed since the test is judged by what it is now.
        const WindowTitle title = ReadTitle(window);
        if (title.length == 0) {
            return;
        }
        const std::int32_t index = FindBestEntryIndex(Engine().pinList, title.View());
        if (index != NoEntry) {
            matched.push_back({window, index});
        }
    });
    return matched;
}

}  // namespace morvane
