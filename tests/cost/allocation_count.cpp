#include "cost/allocation_count.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

// Read without ordering between threads, which costs no more than a plain bool.
std::atomic<bool> counting = false;
std::atomic<std::size_t> allocations = 0;

}  // namespace

namespace morvane::test {

void StartCountingAllocations() {
    allocations = 0;
    counting = true;
}

std::size_t StopCountingAllocations() {
    counting = false;
    return allocations;
}

}  // namespace morvane::test

// The array and non-throwing forms call these. The over-aligned forms do not, so they are not
// counted; the program has no over-aligned types.
void* operator new(std::size_t size) {
    if (counting.load(std::memory_order_relaxed)) {
        ++allocations;
    }
    if (void* const memory = std::malloc(size != 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
