#pragma once

#include <cstddef>

namespace morvane::test {

// Needs allocation_count.cpp in the executable, which replaces the operators. Nothing is counted
// before the start and after the stop, so code that is timed there does not pay for a counter.
void StartCountingAllocations();

// How often this process has allocated memory with new, directly or not, since the start.
[[nodiscard]] std::size_t StopCountingAllocations();

template <typename Work>
[[nodiscard]] std::size_t AllocationsOf(Work&& work) {
    StartCountingAllocations();
    work();
    return StopCountingAllocations();
}

}  // namespace morvane::test
