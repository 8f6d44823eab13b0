#include "session/report/expectation.h"

#include <algorithm>
#include <array>
#include <utility>

namespace morvane::report {

namespace {

using ClaimName = std::pair<std::wstring_view, Claim>;

constexpr std::array ClaimNames = {
    ClaimName{L"topmost", Claim::Topmost},
    ClaimName{L"ordinary", Claim::Ordinary},
    ClaimName{L"active", Claim::Active},
    ClaimName{L"above", Claim::Above},
};

// Removes and returns the text up to the next colon, or all of it if there is none.
std::wstring_view NextPart(std::wstring_view& text) {
    const std::size_t colon = std::min(text.find(L':'), text.size());
    const std::wstring_view part = text.substr(0, colon);
    text.remove_prefix(std::min(colon + 1, text.size()));
    return part;
}

}  // namespace

std::optional<Expectation> ParseExpectation(std::wstring_view text) {
    const std::wstring_view name = NextPart(text);
    const auto* const known =
        std::find_if(ClaimNames.begin(), ClaimNames.end(),
                     [&](const ClaimName& candidate) { return candidate.first == name; });
    if (known == ClaimNames.end()) {
        return std::nullopt;
    }
    Expectation expectation{known->second, std::wstring(NextPart(text)), std::wstring(text)};
    // Every window title contains the empty text.
    const bool complete = !expectation.title.empty() &&
                          expectation.lowerTitle.empty() == (expectation.claim != Claim::Above);
    return complete ? std::optional(std::move(expectation)) : std::nullopt;
}

bool Holds(const Expectation& expectation, const std::vector<ShownWindow>& windows) {
    const ShownWindow* const found = FindShown(windows, expectation.title);
    if (found == nullptr) {
        return false;
    }
    switch (expectation.claim) {
        case Claim::Topmost:
            return found->topmost;
        case Claim::Ordinary:
            return !found->topmost;
        case Claim::Active:
            return found->active;
        case Claim::Above:
            break;
    }
    const ShownWindow* const lower = FindShown(windows, expectation.lowerTitle);
    return lower != nullptr && found < lower;
}

}  // namespace morvane::report
