#include "settings/settings_file.h"

#include <algorithm>
#include <cstddef>
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

// A short read is not the end: that is a read that succeeds without a byte. A failing one counts as
// the end too.
std::string ReadWhole(HANDLE file) {
    constexpr std::size_t LeastRoom = 4096;
    // Only a hint: the file may change while it is read.
    LARGE_INTEGER size{};
    GetFileSizeEx(file, &size);
    std::string bytes;
    std::size_t length = 0;
    bool more = true;
    while (more) {
        bytes.resize(std::max(static_cast<std::size_t>(size.QuadPart), length) + LeastRoom);
        const std::size_t room = std::min(bytes.size() - length, LargestTransfer);
        DWORD count = 0;
        const BOOL read =
            ::ReadFile(file, bytes.data() + length, static_cast<DWORD>(room), &count, nullptr);
        length += count;
        more = read != FALSE && count > 0;
    }
    bytes.resize(length);
    return bytes;
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
    const std::string text = ReadWhole(file.get());
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
