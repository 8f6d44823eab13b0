#include "bare/find_by_copies.h"

#include <cstddef>
#include <string>

#include "pin/identity.h"
#include "settings/text.h"

namespace morvane::bare {

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
