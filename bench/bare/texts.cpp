#include <memory>
#include <string>

#include "bare/loops.h"
#include "base/owners.h"
#include "pin/identity.h"
#include "settings/text.h"

namespace morvane::bare {

std::size_t ReadFileOnce(const wchar_t* path, std::span<char> buffer) {
    constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const FileHandle file(CreateFileW(path, GENERIC_READ, ShareAll, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    std::size_t length = 0;
    DWORD count = 0;
    do {
        length += count;
        ReadFile(file.get(), buffer.data() + length, static_cast<DWORD>(buffer.size() - length),
                 &count, nullptr);
    } while (count > 0);
    return length;
}

std::size_t ReadAndConvertFile(const wchar_t* path, std::size_t size) {
    const auto bytes = std::make_unique_for_overwrite<char[]>(size);
    const auto length = static_cast<int>(ReadFileOnce(path, {bytes.get(), size}));
    const auto text = std::make_unique_for_overwrite<wchar_t[]>(size);
    return static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, bytes.get(), length, text.get(), static_cast<int>(size)));
}

std::int32_t FindByCopies(const PinList& list, std::wstring_view title) {
    std::int32_t best = NoEntry;
    std::size_t bestLength = 0;
    std::int32_t index = 0;
    for (const PinEntry& entry : list.entries) {
        const std::wstring pattern = ToLowerCopy(entry.pattern);
        if (ToLowerCopy(title).find(pattern) != std::wstring::npos && pattern.size() > bestLength) {
            best = index;
            bestLength = pattern.size();
        }
        ++index;
    }
    return best;
}

}  // namespace morvane::bare
