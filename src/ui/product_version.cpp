#include "ui/product_version.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

#include "base/system_library.h"

namespace morvane {

namespace {

// The functions of the version library that are needed; null where one is missing.
struct VersionLibrary {
    Module library = LoadSystemLibrary(L"version.dll");
    decltype(&GetFileVersionInfoSizeW) getSize =
        FindExport<decltype(&GetFileVersionInfoSizeW)>(library, "GetFileVersionInfoSizeW");
    decltype(&GetFileVersionInfoW) getInfo =
        FindExport<decltype(&GetFileVersionInfoW)>(library, "GetFileVersionInfoW");
    decltype(&VerQueryValueW) queryValue =
        FindExport<decltype(&VerQueryValueW)>(library, "VerQueryValueW");

    [[nodiscard]] explicit operator bool() const {
        return getSize != nullptr && getInfo != nullptr && queryValue != nullptr;
    }
};

struct Translation {
    WORD language;
    WORD codePage;
};

// Four digits in lower case, as the names of string tables are written.
std::wstring FormatHex4(WORD value) {
    constexpr std::wstring_view Digits = L"0123456789abcdef";
    std::wstring text;
    for (int shift = 12; shift >= 0; shift -= 4) {
        text += Digits[(value >> shift) & 0xF];
    }
    return text;
}

// The program's version resource; empty when it cannot be read.
std::vector<std::byte> ReadVersionResource(const VersionLibrary& version) {
    std::array<wchar_t, MAX_PATH> path{};
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), MAX_PATH);
    if (length == 0 || length >= MAX_PATH) {
        return {};
    }
    DWORD unused = 0;
    std::vector<std::byte> resource(version.getSize(path.data(), &unused));
    if (resource.empty() || version.getInfo(path.data(), 0, static_cast<DWORD>(resource.size()),
                                            resource.data()) == FALSE) {
        return {};
    }
    return resource;
}

// Empty when it is missing. A view into the resource.
std::wstring_view FindProductVersion(const VersionLibrary& version,
                                     const std::vector<std::byte>& resource) {
    void* found = nullptr;
    UINT size = 0;
    if (version.queryValue(resource.data(), L"\\VarFileInfo\\Translation", &found, &size) ==
            FALSE ||
        size < sizeof(Translation)) {
        return {};
    }
    const Translation first = *static_cast<const Translation*>(found);
    const std::wstring name = L"\\StringFileInfo\\" + FormatHex4(first.language) +
                              FormatHex4(first.codePage) + L"\\ProductVersion";
    if (version.queryValue(resource.data(), name.c_str(), &found, &size) == FALSE || size == 0) {
        return {};
    }
    return static_cast<const wchar_t*>(found);
}

}  // namespace

std::wstring GetProductVersion() {
    constexpr wchar_t Unknown[] = L"?";
    const VersionLibrary version;
    if (!version) {
        return Unknown;
    }
    const std::vector<std::byte> resource = ReadVersionResource(version);
    const std::wstring_view text =
        resource.empty() ? std::wstring_view() : FindProductVersion(version, resource);
    return std::wstring(text.empty() ? Unknown : text);
}

}  // namespace morvane
