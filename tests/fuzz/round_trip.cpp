#include "fuzz/round_trip.h"

#include <cstddef>
#include <string>

#include "support/settings_reference.h"

namespace morvane::test {
namespace {

bool IsHigh(wchar_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLow(wchar_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

bool HasBrokenPair(const std::wstring& text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (IsHigh(text[at]) && at + 1 < text.size() && IsLow(text[at + 1])) {
            ++at;
        } else if (IsHigh(text[at]) || IsLow(text[at])) {
            return true;
        }
    }
    return false;
}

std::wstring WrittenLine(const PinEntry& entry) {
    if (entry.minWidth == 0 && entry.minHeight == 0) {
        return entry.pattern;
    }
    return entry.pattern + L"\t" + std::to_wstring(entry.minWidth) + L"\t" +
           std::to_wstring(entry.minHeight);
}

}  // namespace

std::optional<Unstable> WhyUnstable(const PinEntry& entry) {
    const std::wstring& pattern = entry.pattern;
    if (pattern.find(L'\n') != std::wstring::npos) {
        return Unstable::LineFeed;
    }
    if (!pattern.empty() && pattern.front() == L'#') {
        return Unstable::Comment;
    }
    if (ReferenceSwitchLine(WrittenLine(entry))) {
        return Unstable::SwitchLike;
    }
    if (pattern.empty() || IsReferenceSpace(pattern.front()) || IsReferenceSpace(pattern.back())) {
        return Unstable::OuterSpace;
    }
    if (HasBrokenPair(pattern)) {
        return Unstable::BrokenPair;
    }
    // A written size always comes last in its line.
    const bool sized = entry.minWidth > 0 || entry.minHeight > 0;
    const std::optional<PinEntry> bare = ReferenceEntryLine(pattern);
    const bool readsAsIs = sized || (bare && bare->pattern == pattern);
    return readsAsIs ? std::nullopt : std::optional(Unstable::SizeLike);
}

}  // namespace morvane::test
