#include "support/test_files.h"

#include "base/files.h"

namespace morvane::test {

std::optional<std::string> ReadFileBytes(const std::wstring& path) {
    const FileHandle file = HoldFile(path, GENERIC_READ, FullSharing);
    LARGE_INTEGER size{};
    if (!file || GetFileSizeEx(file.get(), &size) == FALSE) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD count = 0;
    if (ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) ==
        FALSE) {
        return std::nullopt;
    }
    bytes.resize(count);
    return bytes;
}

bool WriteFileBytes(const std::wstring& path, std::string_view bytes) {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD count = 0;
    return file &&
           WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) !=
               FALSE &&
           count == bytes.size();
}

FileHandle HoldFile(const std::wstring& path, DWORD access, DWORD sharing) {
    return FileHandle(CreateFileW(path.c_str(), access, sharing, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
}

std::wstring AsItStands(const std::wstring& path) {
    return L"\\\\?\\" + path;
}

bool PathExists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace morvane::test
