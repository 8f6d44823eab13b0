#include "settings/settings_text.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "settings/text.h"

namespace morvane {

namespace {

constexpr std::wstring_view PinningPrefix = L"@pinning=";

// Written unchanged on every save; comments that a person typed are lost then.
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
           std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
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
    if (!IsNumber(suffix.width) || !IsNumber(suffix.height)) {
        return std::nullopt;
    }
    return suffix;
}

// What separates the fields of the form without tabs.
bool IsBlank(wchar_t unit) {
    return unit == L' ' || unit == L'\t';
}

std::wstring_view WithoutBlankEnd(std::wstring_view text) {
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::size_t FindLastBlank(std::wstring_view text) {
    for (std::size_t at = text.size(); at > 0; --at) {
        if (IsBlank(text[at - 1])) {
            return at - 1;
        }
    }
    return std::wstring_view::npos;
}

std::optional<SizeSuffix> FindBlankForm(std::wstring_view text) {
    constexpr std::size_t None = std::wstring_view::npos;
    const std::wstring_view fields = WithoutBlankEnd(text);
    const std::size_t heightBlank = FindLastBlank(fields);
    if (heightBlank == None) {
        return std::nullopt;
    }
    const std::wstring_view height = TrimmedView(fields.substr(heightBlank + 1));
    if (!IsNumber(height)) {
        return std::nullopt;
    }

    // A run of several blanks counts as one separator.
    std::size_t widthEnd = heightBlank;
    while (widthEnd > 0 && IsWhiteSpace(text[widthEnd - 1])) {
        --widthEnd;
    }
    const std::size_t widthBlank = FindLastBlank(text.substr(0, widthEnd));
    if (widthBlank == None) {
        return std::nullopt;  // two numbers alone are a pattern
    }
    const std::wstring_view width =
        TrimmedView(text.substr(widthBlank + 1, widthEnd - widthBlank - 1));
    if (!IsNumber(width)) {
        return std::nullopt;
    }
    const std::wstring_view pattern = TrimmedView(text.substr(0, widthBlank));
    if (pattern.empty()) {
        return std::nullopt;
    }
    return SizeSuffix{pattern, width, height};
}

std::optional<SizeSuffix> FindSizeSuffix(std::wstring_view text) {
    // A title that ends in two numbers ("Report 2024 01") is read as a pattern with a size: the
    // format has no way to tell, and stays as it is. In the form with tabs the pattern may come out
    // empty, and its line is no entry then; with blanks, such a line is a pattern of numbers.
    std::optional<SizeSuffix> suffix = FindTabForm(text);
    if (!suffix) {
        suffix = FindBlankForm(text);
    }
    return suffix;
}

// Only raw bytes decide: a line of blanks and then "#" is not a comment.
bool IsCommentOrEmpty(std::string_view line) {
    return line.empty() || line.front() == '#';
}

// The buffer is for the line's text, and shared by all lines of a file.
void ParseLine(std::string_view bytes, PinList& list, std::wstring& buffer) {
    if (!bytes.empty() && bytes.back() == '\r') {
        bytes.remove_suffix(1);
    }
    // A byte-order mark is not taken off: the format has none, and the first line of a file that
    // begins with one is read as whatever it then says.
    if (IsCommentOrEmpty(bytes)) {
        return;
    }
    const std::wstring_view line = Utf8ToWide(bytes, buffer);
    // A switch line counts wherever it stands, also after the last entry that is taken; entries
    // beyond the limit are dropped without a word.
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

// Where the next line begins that can still count, from the beginning of a line on. Once the list
// is full only switch lines do, and no line without an "@" is one.
std::size_t NextLine(std::string_view bytes, std::size_t start, const PinList& list) {
    if (list.entries.size() < MaxPinEntries) {
        return start;
    }
    const std::size_t at = bytes.find('@', start);
    // Without a line end before it, that is the first line: its position 0 follows the last one.
    return at == std::string_view::npos ? bytes.size() : bytes.rfind('\n', at) + 1;
}

std::string FormatSizeField(std::int32_t value) {
    return WideToUtf8(FormatInteger(value));
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
    // The bare prefix without a value is not a switch line but an entry like any other text; so
    // is a prefix with blanks in it. Both are deliberate: the format has one spelling.
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
    // Without a well-formed size the whole line is the pattern; nothing is ever reported.
    static_cast<void>(SplitSizeSuffix(pattern, entry.minWidth, entry.minHeight));
    if (pattern.empty()) {
        return std::nullopt;
    }
    entry.pattern = pattern.substr(0, MaxPatternLength);
    return entry;
}

PinList ParseSettingsText(std::string_view bytes) {
    PinList list;
    std::wstring buffer;
    std::size_t start = 0;
    while ((start = NextLine(bytes, start, list)) < bytes.size()) {
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
        // Written as it is: the format has no escape, so a pattern that begins with "#" reads
        // back as a comment and one that ends in two numbers as a size. Kept.
        text += WideToUtf8(entry.pattern);
        if (entry.minWidth > 0 || entry.minHeight > 0) {
            text += '\t' + FormatSizeField(entry.minWidth);
            text += '\t' + FormatSizeField(entry.minHeight);
        }
        text += '\n';
    }
    return text;
}

}  // namespace morvane
