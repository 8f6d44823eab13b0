#include "desktop/usage.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <iostream>

#include "base/win.h"
#include "support/room.h"

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

}  // namespace

Usage MeasureUsage() {
    Usage usage;
    usage.drawingRoom = FillRoom<Pen>([] { return CreatePen(PS_SOLID, 1, 0); }).size();
    usage.menuRoom = FillMenuRoom().size();
    usage.heapBlocks = CountHeapBlocks();
    return usage;
}

std::ostream& operator<<(std::ostream& stream, const Usage& usage) {
    return stream << usage.heapBlocks << " heap blocks, room for " << usage.drawingRoom
                  << " drawing objects and " << usage.menuRoom << " menus";
}

void ExpectNothingLeft(const std::string& what, const Usage& before, const Usage& after) {
    constexpr std::size_t ComeAndGo = 3;
    std::cout << "measured: " << what << "; before: " << before << "; after: " << after << "\n";
    EXPECT_GT(std::min({before.heapBlocks, before.drawingRoom, before.menuRoom}), 0U);
    EXPECT_LE(after.heapBlocks, before.heapBlocks + ComeAndGo);
    EXPECT_GE(after.drawingRoom + ComeAndGo, before.drawingRoom);
    EXPECT_GE(after.menuRoom + ComeAndGo, before.menuRoom);
}

}  // namespace morvane::test
