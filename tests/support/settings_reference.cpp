#include "support/settings_reference.h"

#include <algorithm>
#include <cstddef>
#include <cwctype>
#include <vector>

#include "base/win.h"
#include "support/settings_header.h"

namespace morvane::test {
namespace {

constexpr std::size_t MostEntries = 100;
constexpr std::size_t MostUnits = 512;
constexpr int LargestSize = 8192;

std::vector<std::string> SplitLines(const std::string& bytes) {
    std::vector<std::string> lines(1);
    for (const char byte : bytes) {
        if (byte == '\n') {
            lines.emplace_back();
        } else {
            lines.back() += byte;
        }
    }
    return lines;
}

// Asks for the length first, so as not to depend on the program's limits.
std::wstring FromUtf8(const std::string& bytes) {
    const int size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, nullptr, 0);
    if (length <= 0) {
        return {};
    }
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.data(), length);
    return text;
}

std::string ToUtf8(const std::wstring& text) {
    const int size = static_cast<int>(text.size());
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    if (length <= 0) {
        return {};
    }
    std::string bytes(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, bytes.data(), length, nullptr, nullptr);
    return bytes;
}

bool IsBlank(wchar_t unit) {
    return unit == L' ' || unit == L'\t';
}

bool IsDigits(const std::wstring& text) {
    if (text.empty()) {
        return false;
    }
    return text.find_first_not_of(L"0123456789") == std::wstring::npos;
}

int SizeOf(const std::wstring& digits) {
    // Digits beyond the range of a 64-bit number cannot change the outcome.
    const std::size_t first = std::min(digits.find_first_not_of(L'0'), digits.size());
    const std::wstring significant = digits.substr(first);
    if (significant.empty()) {
        return 0;
    }
    if (significant.size() > 9) {
        return LargestSize;
    }
    return static_cast<int>(std::min<long long>(std::stoll(significant), LargestSize));
}

// "pattern TAB width TAB height"; the height is everything after the second TAB.
std::optional<PinEntry> TabForm(const std::wstring& text) {
    std::vector<std::wstring> fields(1);
    for (const wchar_t unit : text) {
        if (unit == L'\t' && fields.size() < 3) {
            fields.emplace_back();
        } else {
            fields.back() += unit;
        }
    }
    if (fields.size() < 3) {
        return std::nullopt;
    }
    const std::wstring width = ReferenceTrim(fields[1]);
    const std::wstring height = ReferenceTrim(fields[2]);
    if (!IsDigits(width) || !IsDigits(height)) {
        return std::nullopt;
    }
    return PinEntry{ReferenceTrim(fields[0]), SizeOf(width), SizeOf(height)};
}

// The last index below end whose unit is a blank, or -1.
int LastBlankBefore(const std::wstring& text, int end) {
    for (int at = end - 1; at >= 0; --at) {
        if (IsBlank(text[static_cast<std::size_t>(at)])) {
            return at;
        }
    }
    return -1;
}

std::wstring Between(const std::wstring& text, int begin, int end) {
    std::wstring part;
    for (int at = begin; at < end; ++at) {
        part += text[static_cast<std::size_t>(at)];
    }
    return ReferenceTrim(part);
}

// "pattern width height", separated by runs of blanks.
std::optional<PinEntry> BlankForm(const std::wstring& text) {
    int last = static_cast<int>(text.size()) - 1;
    while (last >= 0 && IsBlank(text[static_cast<std::size_t>(last)])) {
        --last;
    }
    const int heightBlank = LastBlankBefore(text, last);
    if (heightBlank < 0) {
        return std::nullopt;
    }
    const std::wstring height = Between(text, heightBlank + 1, last + 1);
    int run = heightBlank;
    while (run > 0 && IsReferenceSpace(text[static_cast<std::size_t>(run - 1)])) {
        --run;
    }
    const int widthBlank = LastBlankBefore(text, run);
    if (!IsDigits(height) || widthBlank < 0) {
        return std::nullopt;
    }
    const std::wstring width = Between(text, widthBlank + 1, run);
    const std::wstring pattern = Between(text, 0, widthBlank);
    if (!IsDigits(width) || pattern.empty()) {
        return std::nullopt;
    }
    return PinEntry{pattern, SizeOf(width), SizeOf(height)};
}

}  // namespace

bool IsReferenceSpace(wchar_t unit) {
    if (unit <= 0xFF) {
        return unit == 0x20 || (unit >= 0x09 && unit <= 0x0D);
    }
    return std::iswspace(static_cast<std::wint_t>(unit)) != 0;
}

std::wstring ReferenceTrim(const std::wstring& text) {
    std::wstring trimmed = text;
    while (!trimmed.empty() && IsReferenceSpace(trimmed[0])) {
        trimmed.erase(0, 1);
    }
    while (!trimmed.empty() && IsReferenceSpace(trimmed[trimmed.size() - 1])) {
        trimmed.erase(trimmed.size() - 1);
    }
    return trimmed;
}

std::wstring ReferenceLower(std::wstring text) {
    constexpr std::wstring_view Upper = L"ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    constexpr std::wstring_view Lower = L"abcdefghijklmnopqrstuvwxyz";
    for (wchar_t& unit : text) {
        const std::size_t at = Upper.find(unit);
        if (at != std::wstring_view::npos) {
            unit = Lower[at];
        }
    }
    return text;
}

bool ReferenceMatches(const std::wstring& title, const std::wstring& pattern) {
    return ReferenceLower(title).find(ReferenceLower(pattern)) != std::wstring::npos;
}

int ReferenceBestEntry(const PinList& list, const std::wstring& title) {
    int best = -1;
    for (int index = 0; index < static_cast<int>(list.entries.size()); ++index) {
        const std::wstring& pattern = list.entries[static_cast<std::size_t>(index)].pattern;
        const std::size_t bestLength =
            best < 0 ? 0 : list.entries[static_cast<std::size_t>(best)].pattern.size();
        if (ReferenceMatches(title, pattern) && pattern.size() > bestLength) {
            best = index;
        }
    }
    return best;
}

std::optional<bool> ReferenceSwitchLine(const std::wstring& line) {
    const std::wstring prefix = L"@pinning=";
    const std::wstring text = ReferenceLower(ReferenceTrim(line));
    if (text.size() == prefix.size() || text.substr(0, prefix.size()) != prefix) {
        return std::nullopt;
    }
    const std::wstring value = ReferenceTrim(text.substr(prefix.size()));
    const bool off = value == L"0" || value == L"false" || value == L"off";
    return !off;
}

std::optional<PinEntry> ReferenceEntryLine(const std::wstring& line) {
    const std::wstring text = ReferenceTrim(line);
    std::optional<PinEntry> entry = TabForm(text);
    if (!entry) {
        entry = BlankForm(text);
    }
    if (!entry) {
        entry = PinEntry{text, 0, 0};
    }
    entry->pattern = entry->pattern.substr(0, MostUnits);
    if (entry->pattern.empty()) {
        return std::nullopt;
    }
    return entry;
}

PinList ReferenceParse(const std::string& bytes) {
    PinList list{true, {}};
    for (std::string line : SplitLines(bytes)) {
        if (!line.empty() && line[line.size() - 1] == '\r') {
            line.erase(line.size() - 1);
        }
        if (line.empty() || line[0] == '#') {
            continue;
        }
        const std::wstring text = FromUtf8(line);
        const std::optional<bool> pinning = ReferenceSwitchLine(text);
        if (pinning) {
            list.pinning = *pinning;
            continue;
        }
        const std::optional<PinEntry> entry = ReferenceEntryLine(text);
        if (entry && list.entries.size() < MostEntries) {
            list.entries.push_back(*entry);
        }
    }
    return list;
}

std::string ReferenceFormat(const PinList& list) {
    std::string text(SettingsHeader);
    text += "@pinning=";
    text += list.pinning ? '1' : '0';
    text += '\n';
    for (const PinEntry& entry : list.entries) {
        text += ToUtf8(entry.pattern);
        if (entry.minWidth > 0 || entry.minHeight > 0) {
            text += '\t' + std::to_string(entry.minWidth) + '\t' + std::to_string(entry.minHeight);
        }
        text += '\n';
    }
    return text;
}

bool SameEntry(const PinEntry& a, const PinEntry& b) {
    return a.pattern == b.pattern && a.minWidth == b.minWidth && a.minHeight == b.minHeight;
}

bool SameList(const PinList& a, const PinList& b) {
    return a.pinning == b.pinning && std::equal(a.entries.begin(), a.entries.end(),
                                                b.entries.begin(), b.entries.end(), SameEntry);
}

}  // namespace morvane::test
