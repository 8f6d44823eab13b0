#include "fuzz/checks.h"

#include <algorithm>
#include <optional>

#include "app/command_line.h"
#include "pin/identity.h"
#include "settings/settings_text.h"
#include "support/languages.h"
#include "support/printed.h"
#include "support/settings_reference.h"

namespace morvane::test {
namespace {

constexpr int LargestSize = 8192;
constexpr std::size_t LongestPattern = 512;
constexpr int MostReadings = 20;

bool IsSize(std::int32_t size) {
    return size >= 0 && size <= LargestSize;
}

bool IsWithinLimits(const PinEntry& entry) {
    const std::wstring& pattern = entry.pattern;
    // Trimmed, except where a pattern was cut.
    return !pattern.empty() && pattern.size() <= LongestPattern &&
           !IsReferenceSpace(pattern.front()) &&
           (pattern.size() == LongestPattern || !IsReferenceSpace(pattern.back())) &&
           IsSize(entry.minWidth) && IsSize(entry.minHeight);
}

bool WithinLimits(const PinList& list) {
    return list.entries.size() <= 100 &&
           std::all_of(list.entries.begin(), list.entries.end(), IsWithinLimits);
}

std::string Difference(const char* what, const PinList& got, const PinList& expected) {
    return std::string(what) + "\n--- got\n" + Printed(got) + "--- expected\n" + Printed(expected);
}

struct Stability {
    bool all = true;
    bool lineFeeds = false;
    std::vector<PinEntry> stable;
};

Stability StabilityOf(const PinList& list, Workplace& workplace) {
    Stability stability;
    for (const PinEntry& entry : list.entries) {
        ++workplace.entries;
        const std::optional<Unstable> why = WhyUnstable(entry);
        if (!why) {
            stability.stable.push_back(entry);
            continue;
        }
        stability.all = false;
        stability.lineFeeds = stability.lineFeeds || *why == Unstable::LineFeed;
        ++workplace.unstableEntries.at(static_cast<std::size_t>(*why));
    }
    return stability;
}

// Whether whole contains the entries of part in their order.
bool HoldsInOrder(const std::vector<PinEntry>& whole, const std::vector<PinEntry>& part) {
    std::size_t next = 0;
    for (const PinEntry& entry : whole) {
        if (next < part.size() && SameEntry(entry, part[next])) {
            ++next;
        }
    }
    return next == part.size();
}

// Writes the list and reads it back into again.
std::string CheckRoundTrip(Workplace& workplace, const PinList& list, PinList& again) {
    const std::string text = FormatSettingsText(list);
    if (text != ReferenceFormat(list)) {
        return "not written as expected: " + Printed(text);
    }
    again = ParseSettingsText(workplace.second.Place(text, Guard::BehindEnd));
    const PinList expected = ReferenceParse(text);
    if (!SameList(again, expected)) {
        return Difference("the written text is read wrongly", again, expected);
    }
    if (!WithinLimits(again)) {
        return Difference("a limit is exceeded", again, expected);
    }
    const Stability stability = StabilityOf(list, workplace);
    if (stability.all && !SameList(again, list)) {
        return Difference("the round trip changed something", again, list);
    }
    // An entry that falls apart into several lines may push later ones over the limit.
    if (!stability.lineFeeds && !HoldsInOrder(again.entries, stability.stable)) {
        return Difference("the round trip changed an entry", again, list);
    }
    return {};
}

std::string CheckOrigins(const PinList& list) {
    for (const PinEntry& entry : list.entries) {
        const std::optional<Unstable> why = WhyUnstable(entry);
        if (why && !ComesFromFiles(*why)) {
            return "an entry that no file can produce: " + Printed(entry);
        }
    }
    return {};
}

std::optional<Switch> ReferenceSwitch(const std::wstring& commandLine) {
    if (ReferenceMatches(commandLine, L"--install-startup")) {
        return Switch::InstallStartup;
    }
    if (ReferenceMatches(commandLine, L"--remove-startup")) {
        return Switch::RemoveStartup;
    }
    return ReferenceMatches(commandLine, L"--remove-data") ? std::optional(Switch::RemoveData)
                                                           : std::nullopt;
}

Language ReferenceLanguage(const std::wstring& code) {
    const std::wstring lower = ReferenceLower(code);
    for (const auto& [language, brief, full] : AllLanguages) {
        if (lower == brief || lower == full) {
            return language;
        }
    }
    return Language::English;
}

}  // namespace

std::string CheckDocument(Workplace& workplace, std::string_view document, Guard guard) {
    const PinList list = ParseSettingsText(workplace.first.Place(document, guard));
    const PinList expected = ReferenceParse(std::string(document));
    if (!WithinLimits(list)) {
        return Difference("a limit is exceeded", list, expected);
    }
    if (!SameList(list, expected)) {
        return Difference("the document is read wrongly", list, expected);
    }
    if (std::string wrong = CheckOrigins(list); !wrong.empty()) {
        return wrong;
    }
    // Entries that read as something else change with a reading, but every change removes
    // something: after a few readings the list stays as it is.
    PinList before = list;
    for (int readings = 0; readings < MostReadings; ++readings) {
        PinList after;
        if (std::string wrong = CheckRoundTrip(workplace, before, after); !wrong.empty()) {
            return wrong;
        }
        if (after.pinning != list.pinning) {
            return "the round trip changed the master switch";
        }
        if (SameList(after, before)) {
            return {};
        }
        before = after;
    }
    return Difference("the list never settles", before, list);
}

std::string CheckTitleList(Workplace& workplace, const PinList& list) {
    PinList again;
    return CheckRoundTrip(workplace, list, again);
}

std::string CheckTitle(Workplace& workplace, const PinList& list, const std::wstring& title,
                       Guard guard) {
    const std::wstring_view guardedTitle = workplace.first.Place(title, guard);
    for (const PinEntry& entry : list.entries) {
        const std::wstring_view pattern = workplace.second.Place(entry.pattern, guard);
        if (PatternMatches(guardedTitle, pattern) != ReferenceMatches(title, entry.pattern) ||
            PatternEquals(pattern, guardedTitle) !=
                (ReferenceLower(title) == ReferenceLower(entry.pattern))) {
            return "matching the title " + Printed(title) + " against " + Printed(entry.pattern);
        }
    }
    const int expected = ReferenceBestEntry(list, title);
    const PinEntry* const best = FindBestEntry(list, guardedTitle);
    PinState state = PinState::NotPinned;
    if (expected >= 0) {
        const PinEntry& entry = list.entries.at(static_cast<std::size_t>(expected));
        const bool sized = entry.minWidth > 0 || entry.minHeight > 0;
        state = sized ? PinState::PinnedWithMinSize : PinState::Pinned;
    }
    const bool right = FindBestEntryIndex(list, guardedTitle) == expected &&
                       (best != nullptr) == (expected >= 0) &&
                       (best == nullptr || best - list.entries.data() == expected) &&
                       IsPinnedTitle(list, guardedTitle) == (expected >= 0) &&
                       PinStateForTitle(list, guardedTitle) == state;
    return right ? "" : "the entry of the title " + Printed(title);
}

std::string CheckCommandLine(Workplace& workplace, const std::wstring& commandLine, Guard guard) {
    const std::optional<Switch> given = ParseCommandLine(workplace.first.Place(commandLine, guard));
    return given == ReferenceSwitch(commandLine) ? "" : "the command line " + Printed(commandLine);
}

std::string CheckLanguageCode(Workplace& workplace, const std::wstring& code) {
    // Nothing beyond the terminator may be read.
    const std::wstring_view terminated(code.c_str(), code.size() + 1);
    const wchar_t* const guarded = workplace.first.Place(terminated, Guard::BehindEnd).data();
    return ParseLanguageCode(guarded) == ReferenceLanguage(code)
               ? ""
               : "the language code " + Printed(code);
}

}  // namespace morvane::test
