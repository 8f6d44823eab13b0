#pragma once

#include <cstddef>
#include <iosfwd>

namespace morvane::test {

// What this process holds of what runs out.
struct Usage {
    std::size_t heapBlocks = 0;  // in use, of all heaps
    std::size_t pageFileBytes = 0;
    std::size_t drawingRoom = 0;  // drawing objects that could still be made
    std::size_t menuRoom = 0;     // menus that could still be made, in the whole session
};

// Drawing objects that this process could still make. Quick.
[[nodiscard]] std::size_t DrawingRoom();

// Counts the room by filling it up for a moment: takes a second or two, and nobody else can make
// a menu meanwhile.
[[nodiscard]] Usage MeasureUsage();

std::ostream& operator<<(std::ostream& stream, const Usage& usage);

}  // namespace morvane::test
