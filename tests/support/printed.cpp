#include "support/printed.h"

#include <cstdint>

namespace morvane::test {

namespace {

void AppendUnit(std::string& printed, std::uint32_t unit, int hexDigits) {
    if (unit == '"' || unit == '\\') {
        printed += '\\';
    }
    if (unit >= ' ' && unit <= '~') {
        printed += static_cast<char>(unit);
        return;
    }
    printed += "\\x";
    for (int shift = (hexDigits - 1) * 4; shift >= 0; shift -= 4) {
        printed += "0123456789ABCDEF"[(unit >> shift) & 0xFU];
    }
}

}  // namespace

std::string Printed(std::wstring_view text) {
    std::string printed = "L\"";
    for (const wchar_t unit : text) {
        AppendUnit(printed, unit, 4);
    }
    return printed + '"';
}

std::string Printed(std::string_view bytes) {
    std::string printed = "\"";
    for (const char byte : bytes) {
        AppendUnit(printed, static_cast<unsigned char>(byte), 2);
    }
    return printed + '"';
}

std::string Printed(const PinEntry& entry) {
    return Printed(entry.pattern) + ' ' + std::to_string(entry.minWidth) + " x " +
           std::to_string(entry.minHeight);
}

std::string Printed(const PinList& list) {
    std::string printed = list.pinning ? "pinning on\n" : "pinning off\n";
    for (const PinEntry& entry : list.entries) {
        printed += Printed(entry) + '\n';
    }
    return printed;
}

}  // namespace morvane::test
