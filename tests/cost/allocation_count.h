#pragma once

#include <cstddef>

namespace morvane::test {

// Only in executables that allocation_count.cpp is a source of: it replaces the operators. Nothing
// is counted outside of the two, so that what is timed there pays for no counter.
void StartCountingAllocations();

// How often this process has asked for memory since the counting began, by new and by whatever uses
// it.
[[nodiscard]] std::size_t StopCountingAllocations();

template <typename Work>
[[nodiscard]] std::size_t AllocationsOf(Work&& work) {
    StartCountingAllocations();
    work();
    return StopCountingAllocations();
}

}  // namespace morvane::test
