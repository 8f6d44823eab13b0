#include "settings/settings_file.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "base/owners.h"
#include "settings/settings_text.h"

namespace morvane {

namespace {

// Nobody is locked out: an editor may hold the file open, save it, rename it or delete it while
// the program reads or rewrites it.
constexpr DWORD FullSharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// ReadFile and WriteFile count in 32 bits; larger transfers go in steps.
constexpr std::size_t LargestTransfer = 0x40000000;

FileHandle OpenFile(const std::wstring& path, DWORD access, DWORD disposition) {
    return FileHandle(CreateFileW(path.c_str(), access, FullSharing, nullptr, disposition,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
}

// All bytes up to the end as it stands when it is reached; a failing read ends the text there.
std::string ReadToEnd(HANDLE file) {
    constexpr std::size_t SmallestStep = 4096;
    // Only a hint for the first step: without it, or when the file grows, the loop goes on.
    LARGE_INTEGER size{};
    GetFileSizeEx(file, &size);
    std::string bytes;
    std::size_t used = 0;
    // One byte more than the size, so that the read that meets the end is the first one.
    std::size_t step = std::max(static_cast<std::size_t>(size.QuadPart) + 1, SmallestStep);
    while (true) {
        step = std::min(step, LargestTransfer);
        bytes.resize(used + step);
        DWORD count = 0;
        const BOOL read =
            ::ReadFile(file, bytes.data() + used, static_cast<DWORD>(step), &count, nullptr);
        used += count;
        if (read == FALSE || count < step) {
            bytes.resize(used);
            return bytes;
        }
        step = std::max(used, SmallestStep);
    }
}

bool WriteWhole(HANDLE file, std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t step = std::min(bytes.size(), LargestTransfer);
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
    const FileHandle file = OpenFile(path, GENERIC_READ, OPEN_EXISTING);
    if (!file) {
        return {};
    }
    return ParseSettingsText(ReadToEnd(file.get()));
}

bool WriteSettingsFile(const std::wstring& path, const PinList& list) {
    // Rewritten in place, without a temporary file and a rename: the file keeps its identity for
    // an editor that holds it open. Opened and then emptied, because the disposition that does
    // both in one refuses hidden files.
    const FileHandle file = OpenFile(path, GENERIC_WRITE, OPEN_ALWAYS);
    // A failure that only shows when the file is closed goes unnoticed: the next read tells.
    return file && SetEndOfFile(file.get()) != FALSE &&
           WriteWhole(file.get(), FormatSettingsText(list));
}

}  // namespace morvane
