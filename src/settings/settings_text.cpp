#include "settings/settings_text.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "settings/text.h"

namespace morvane {
namespace {

constexpr std::wstring_view PinningPrefix = L"@pinning=";

// Written on every save; comments that the user typed are lost then.
constexpr std::string_view Header =
    "# Morvane config (UTF-8)\n"
    "# One entry per line: pattern [min_width min_height]\n"
    "# pattern = title substring (case-insensitive). 0 = no resize.\n"
    "# Example: Visual Studio Code\t1280\t720\n";

struct SizeSuffix {
    std::wstring_view pattern;
    std::wstring_view width;
    std::wstring_view height;
};

bool IsNumber(std::wstring_view text) {
    return !text.empty() &&
           std::ranges::all_of(text, [](wchar_t c) { return c >= L'0' && c <= L'9'; });
}

// The value of a text of ASCII digits, however many, capped at MaxMinSize.
std::int32_t ToCappedSize(std::wstring_view digits) {
    std::int32_t value = 0;
    for (const wchar_t digit : digits) {
        value = std::min(value * 10 + (digit - L'0'), MaxMinSize);
    }
    return value;
}

std::optional<SizeSuffix> FindTabForm(std::wstring_view text) {
    const std::size_t first = text.find(L'\t');
    if (first == std::wstring_view::npos) {
        return std::nullopt;
    }
    const std::size_t second = text.find(L'\t', first + 1);
    if (second == std::wstring_view::npos) {
        return std::nullopt;
    }
    const SizeSuffix suffix{TrimmedView(text.substr(0, first)),
                            TrimmedView(text.substr(first + 1, second - first - 1)),
                            TrimmedView(text.substr(second + 1))};
    return IsNumber(suffix.width) && IsNumber(suffix.height) ? std::optional(suffix) : std::nullopt;
}

// npos, to which 0 - 1 wraps, when there is none. A loop, because find_last_of calls the runtime
// for each unit.
std::size_t FindLastBlank(std::wstring_view text) {
    std::size_t at = text.size();
    while (at > 0 && text[at - 1] != L' ' && text[at - 1] != L'\t') {
        --at;
    }
    return at - 1;
}

std::optional<SizeSuffix> FindBlankForm(std::wstring_view text) {
    // If there are only blanks, npos + 1 wraps to 0.
    const std::wstring_view fields = text.substr(0, text.find_last_not_of(L" \t") + 1);
    const std::size_t heightBlank = FindLastBlank(fields);
    const std::wstring_view height = TrimmedView(fields.substr(heightBlank + 1));
    if (heightBlank == std::wstring_view::npos || !IsNumber(height)) {
        return std::nullopt;
    }
    // A run of several blanks counts as one separator.
    std::size_t widthEnd = heightBlank;
    while (widthEnd > 0 && IsWhiteSpace(text[widthEnd - 1])) {
        --widthEnd;
    }
    const std::size_t widthBlank = FindLastBlank(text.substr(0, widthEnd));
    if (widthBlank == std::wstring_view::npos) {
        return std::nullopt;  // two numbers alone are a pattern
    }
    const SizeSuffix suffix{TrimmedView(text.substr(0, widthBlank)),
                            TrimmedView(text.substr(widthBlank + 1, widthEnd - widthBlank - 1)),
                            height};
    return !suffix.pattern.empty() && IsNumber(suffix.width) ? std::optional(suffix) : std::nullopt;
}

std::optional<SizeSuffix> FindSizeSuffix(std::wstring_view text) {
    // A title that ends in two numbers ("Report 2024 01") reads as a pattern with a size: the
    // format cannot tell them apart.
    const std::optional<SizeSuffix> tabForm = FindTabForm(text);
    return tabForm ? tabForm : FindBlankForm(text);
}

// The buffer is shared by all lines of a file: it grows to the longest line and is then reused.
void ParseLine(std::string_view bytes, PinList& list, std::wstring& buffer) {
    if (!bytes.empty() && bytes.back() == '\r') {
        bytes.remove_suffix(1);
    }
    // Only raw bytes decide: a line of blanks and then "#" is no comment, nor is one that begins
    // with a byte-order mark, which the format does not have.
    if (bytes.empty() || bytes.front() == '#') {
        return;
    }
    const std::wstring_view line = Utf8ToWide(bytes, buffer);
    // A switch line counts even after the last entry that is taken; further entries are dropped.
    if (ParsePinningLine(line, list) || list.entries.size() >= MaxPinEntries) {
        return;
    }
    if (std::optional<PinEntry> entry = ParseEntryLine(line)) {
        if (list.entries.empty()) {
            list.entries.reserve(MaxPinEntries);
        }
        list.entries.push_back(std::move(*entry));
    }
}

}  // namespace

bool SplitSizeSuffix(std::wstring_view& text, std::int32_t& width, std::int32_t& height) {
    const std::optional<SizeSuffix> suffix = FindSizeSuffix(text);
    if (!suffix) {
        return false;
    }
    width = ToCappedSize(suffix->width);
    height = ToCappedSize(suffix->height);
    text = suffix->pattern;
    return true;
}

bool ParsePinningLine(std::wstring_view line, PinList& list) {
    const std::wstring_view trimmed = TrimmedView(line);
    // Without a value, or with blanks inside the prefix, the line is an ordinary entry: the switch
    // has one spelling, so that few titles can be taken for it.
    if (trimmed.size() <= PinningPrefix.size() ||
        !EqualsIgnoreCase(trimmed.substr(0, PinningPrefix.size()), PinningPrefix)) {
        return false;
    }
    const std::wstring_view value = TrimmedView(trimmed.substr(PinningPrefix.size()));
    list.pinning =
        value != L"0" && !EqualsIgnoreCase(value, L"false") && !EqualsIgnoreCase(value, L"off");
    return true;
}

std::optional<PinEntry> ParseEntryLine(std::wstring_view line) {
    PinEntry entry;
    std::wstring_view pattern = TrimmedView(line);
    // Without a well-formed size the whole line is the pattern.
    SplitSizeSuffix(pattern, entry.minWidth, entry.minHeight);
    if (pattern.empty()) {
        return std::nullopt;
    }
    entry.pattern = pattern.substr(0, MaxPatternLength);
    return entry;
}

PinList ParseSettingsText(std::string_view bytes) {
    PinList list;
    std::wstring buffer;
    for (std::size_t start = 0; start <= bytes.size();) {
        const std::size_t end = std::min(bytes.find('\n', start), bytes.size());
        ParseLine(bytes.substr(start, end - start), list, buffer);
        start = end + 1;
    }
    return list;
}

std::string FormatSettingsText(const PinList& list) {
    std::string text(Header);
    text += list.pinning ? "@pinning=1\n" : "@pinning=0\n";
    for (const PinEntry& entry : list.entries) {
        // The format has no escape: a pattern that begins with "#" reads back as a comment, one
        // that ends in two numbers as a pattern with a size.
        text += WideToUtf8(entry.pattern);
        if (entry.minWidth > 0 || entry.minHeight > 0) {
            text += '\t' + FormatInteger(entry.minWidth);
            text += '\t' + FormatInteger(entry.minHeight);
        }
        text += '\n';
    }
    return text;
}

}  // namespace morvane
