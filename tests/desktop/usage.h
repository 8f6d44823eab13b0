#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

namespace morvane::test {

// This process's use of limited resources.
struct Usage {
    std::size_t heapBlocks = 0;   // in use, in all heaps
    std::size_t drawingRoom = 0;  // drawing objects that could still be created
    std::size_t menuRoom = 0;     // menus that could still be created, in the whole session
};

// Measures the room by briefly filling it up: takes a second or two, during which no other process
// can create a menu.
[[nodiscard]] Usage MeasureUsage();

std::ostream& operator<<(std::ostream& stream, const Usage& usage);

// Prints both. After many repetitions, fails the test if any of them has left something behind.
void ExpectNothingLeft(const std::string& what, const Usage& before, const Usage& after);

}  // namespace morvane::test
