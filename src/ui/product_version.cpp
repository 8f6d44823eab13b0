#include "ui/product_version.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

#include "base/process.h"
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

// The program's version resource; empty when it cannot be read.
std::vector<std::byte> ReadVersionResource(const VersionLibrary& version) {
    const std::wstring path = ProgramPath();
    if (path.empty()) {
        return {};
    }
    DWORD unused = 0;
    std::vector<std::byte> resource(version.getSize(path.c_str(), &unused));
    if (resource.empty() || version.getInfo(path.c_str(), 0, static_cast<DWORD>(resource.size()),
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
    constexpr std::size_t NameCapacity = 48;
    std::array<wchar_t, NameCapacity> name{};
    wsprintfW(name.data(), L"\\StringFileInfo\\%04x%04x\\ProductVersion", first.language,
              first.codePage);
    if (version.queryValue(resource.data(), name.data(), &found, &size) == FALSE || size == 0) {
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
