#include "settings/settings_file.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "base/files.h"
#include "base/owners.h"
#include "settings/settings_text.h"

namespace morvane {
namespace {

FileHandle OpenFile(const std::wstring& path, DWORD access, DWORD disposition) {
    return FileHandle(CreateFileW(path.c_str(), access, FullSharing, nullptr, disposition,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
}

// Only a read that succeeds with no bytes is the end of a file; a short one is not. An error counts
// as the end too. Nothing if the file cannot be opened.
std::string ReadWhole(const std::wstring& path) {
    const FileHandle file = OpenFile(path, GENERIC_READ, OPEN_EXISTING);
    constexpr std::size_t PartSize = 0x4000;
    std::array<char, PartSize> part{};
    std::string bytes;
    bool more = static_cast<bool>(file);
    while (more) {
        DWORD count = 0;
        more = ReadFile(file.get(), part.data(), PartSize, &count, nullptr) != FALSE && count > 0;
        bytes.append(part.data(), count);
    }
    return bytes;
}

bool WriteWhole(HANDLE file, std::string_view bytes) {
    // WriteFile counts in 32 bits.
    constexpr std::size_t LargestStep = 0x40000000;
    while (!bytes.empty()) {
        const std::size_t step = std::min(bytes.size(), LargestStep);
        DWORD count = 0;
        if (WriteFile(file, bytes.data(), static_cast<DWORD>(step), &count, nullptr) == FALSE ||
            count == 0) {
            return false;
        }
        bytes.remove_prefix(count);
    }
    return true;
}

}  // namespace

PinList ReadSettingsFile(const std::wstring& path) {
    // The file is closed before it is parsed: one that another program deletes stays until its last
    // handle goes.
    return ParseSettingsText(ReadWhole(path));
}

bool WriteSettingsFile(const std::wstring& path, const PinList& list) {
    // Before the file is truncated: running out of memory here leaves it as it was.
    const std::string text = FormatSettingsText(list);
    // In place, without a temporary file and a rename: an editor that has the file open keeps it.
    // CREATE_ALWAYS would fail with ERROR_ACCESS_DENIED for a hidden file.
    const FileHandle file = OpenFile(path, GENERIC_WRITE, OPEN_ALWAYS);
    // An error that only shows on close goes unnoticed; the next read shows what was written.
    return file && SetEndOfFile(file.get()) != FALSE && WriteWhole(file.get(), text);
}

}  // namespace morvane
