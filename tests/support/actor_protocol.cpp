#include "support/actor_protocol.h"

#include <charconv>

namespace morvane::test {
namespace {

constexpr std::string_view EmptyText = "-";
constexpr std::size_t DigitsPerUnit = 4;

}  // namespace

std::string HexFromText(std::wstring_view text) {
    if (text.empty()) {
        return std::string(EmptyText);
    }
    constexpr std::string_view Digits = "0123456789abcdef";
    std::string hex;
    hex.reserve(text.size() * DigitsPerUnit);
    for (const wchar_t unit : text) {
        for (unsigned shift = 16; shift > 0; shift -= 4) {
            hex += Digits[(static_cast<unsigned>(unit) >> (shift - 4)) & 0xFU];
        }
    }
    return hex;
}

std::optional<std::wstring> TextFromHex(std::string_view digits) {
    if (digits == EmptyText) {
        return std::wstring();
    }
    if (digits.empty() || digits.size() % DigitsPerUnit != 0) {
        return std::nullopt;
    }
    std::wstring text;
    for (std::size_t at = 0; at < digits.size(); at += DigitsPerUnit) {
        const char* first = digits.data() + at;
        const char* last = first + DigitsPerUnit;
        unsigned unit = 0;
        const auto [end, failure] = std::from_chars(first, last, unit, 16);
        if (failure != std::errc() || end != last) {
            return std::nullopt;
        }
        text += static_cast<wchar_t>(unit);
    }
    return text;
}

std::string JoinNumbers(std::initializer_list<long long> numbers, char separator) {
    std::string line;
    for (const long long number : numbers) {
        line += (line.empty() ? "" : std::string(1, separator)) + std::to_string(number);
    }
    return line;
}

std::vector<std::string_view> SplitWords(std::string_view line, char separator) {
    std::vector<std::string_view> words;
    while (!line.empty()) {
        const std::size_t length = line.find(separator);
        const std::string_view word = line.substr(0, length);
        if (!word.empty()) {
            words.push_back(word);
        }
        line.remove_prefix(length == std::string_view::npos ? line.size() : length + 1);
    }
    return words;
}

std::optional<long long> NumberFromWord(std::string_view word) {
    long long number = 0;
    const char* last = word.data() + word.size();
    const auto [end, failure] = std::from_chars(word.data(), last, number);
    if (failure != std::errc() || end != last) {
        return std::nullopt;
    }
    return number;
}

bool IsTopmostRequest(const PositionRequest& request) {
    return request.insertAfter == HWND_TOPMOST && (request.flags & SWP_NOZORDER) == 0;
}

LONGLONG CounterNow() {
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    return counter.QuadPart;
}

HWND WindowFromNumber(long long number) {
    return reinterpret_cast<HWND>(number);
}

long long NumberFromWindow(HWND window) {
    return reinterpret_cast<INT_PTR>(window);
}

}  // namespace morvane::test
