#include "settings/settings_file.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

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

// Reads on until the buffer is full or the end is reached, and returns how far it came; a failing
// read counts as the end.
std::size_t ReadUpTo(HANDLE file, char* buffer, std::size_t used, std::size_t capacity) {
    while (used < capacity) {
        const std::size_t step = std::min(capacity - used, LargestTransfer);
        DWORD count = 0;
        const BOOL read =
            ::ReadFile(file, buffer + used, static_cast<DWORD>(step), &count, nullptr);
        used += count;
        if (read == FALSE || count < step) {
            break;
        }
    }
    return used;
}

// Takes over a file whose beginning has been read already and is not all of it.
PinList ReadLongFile(FileHandle file, std::string_view beginning) {
    // Only a hint: when the file grows meanwhile, the loop goes on. One byte more than the size, so
    // that the read that meets the end leaves room.
    LARGE_INTEGER size{};
    GetFileSizeEx(file.get(), &size);
    std::size_t capacity =
        std::max(static_cast<std::size_t>(size.QuadPart), 2 * beginning.size()) + 1;
    // Not cleared first, since it is read into at once.
    auto bytes = std::make_unique_for_overwrite<char[]>(capacity);
    std::copy(beginning.begin(), beginning.end(), bytes.get());
    std::size_t length = ReadUpTo(file.get(), bytes.get(), beginning.size(), capacity);
    while (length == capacity) {
        capacity *= 2;
        auto larger = std::make_unique_for_overwrite<char[]>(capacity);
        std::copy_n(bytes.get(), length, larger.get());
        bytes = std::move(larger);
        length = ReadUpTo(file.get(), bytes.get(), length, capacity);
    }
    file.reset();
    return ParseSettingsText({bytes.get(), length});
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
    FileHandle file = OpenFile(path, GENERIC_READ, OPEN_EXISTING);
    if (!file) {
        return {};
    }
    // Nearly every file is small: one call reads it, without memory and without asking its size.
    constexpr std::size_t SmallFile = 8192;
    std::array<char, SmallFile> beginning{};
    const std::size_t length = ReadUpTo(file.get(), beginning.data(), 0, beginning.size());
    const std::string_view text(beginning.data(), length);
    if (length == beginning.size()) {
        return ReadLongFile(std::move(file), text);
    }
    // Before the text is parsed: a file that its owner deletes is gone when nobody has it open.
    file.reset();
    return ParseSettingsText(text);
}

bool WriteSettingsFile(const std::wstring& path, const PinList& list) {
    // Made before the file is emptied: a program that ends for want of memory leaves it as it was.
    const std::string text = FormatSettingsText(list);
    // Rewritten in place, without a temporary file and a rename: the file keeps its identity for
    // an editor that holds it open. Opened and then emptied, because the disposition that does
    // both in one refuses hidden files.
    const FileHandle file = OpenFile(path, GENERIC_WRITE, OPEN_ALWAYS);
    // A failure that only shows when the file is closed goes unnoticed: the next read tells.
    return file && SetEndOfFile(file.get()) != FALSE && WriteWhole(file.get(), text);
}

}  // namespace morvane
