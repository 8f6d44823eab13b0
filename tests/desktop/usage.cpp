#include "desktop/usage.h"

#include <array>
#include <ostream>
#include <utility>
#include <vector>

#include "base/gui_owners.h"
#include "base/win.h"

#include <psapi.h>

namespace morvane::test {
namespace {

std::size_t CountHeapBlocks() {
    // An array, because a vector would add heap blocks of its own.
    std::array<HANDLE, 64> heaps{};
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    std::size_t blocks = 0;
    for (DWORD index = 0; index < count && index < heaps.size(); ++index) {
        PROCESS_HEAP_ENTRY entry{};
        HeapLock(heaps[index]);
        while (HeapWalk(heaps[index], &entry) != FALSE) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
                ++blocks;
            }
        }
        HeapUnlock(heaps[index]);
    }
    return blocks;
}

template <typename Owner, typename Make>
std::size_t Room(Make make) {
    std::vector<Owner> made;
    made.reserve(100'000);
    while (Owner one{make()}) {
        made.push_back(std::move(one));
    }
    return made.size();
}

std::size_t PageFileBytes() {
    PROCESS_MEMORY_COUNTERS counters{};
    return GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)) != FALSE
               ? counters.PagefileUsage
               : 0;
}

}  // namespace

Usage MeasureUsage() {
    Usage usage;
    usage.drawingRoom = Room<Pen>([] { return CreatePen(PS_SOLID, 1, 0); });
    usage.menuRoom = Room<Menu>([] { return CreatePopupMenu(); });
    usage.pageFileBytes = PageFileBytes();
    usage.heapBlocks = CountHeapBlocks();
    return usage;
}

std::ostream& operator<<(std::ostream& stream, const Usage& usage) {
    return stream << usage.heapBlocks << " heap blocks, " << usage.pageFileBytes / 1024
                  << " KiB paged, room for " << usage.drawingRoom << " drawing objects and "
                  << usage.menuRoom << " menus";
}

}  // namespace morvane::test
