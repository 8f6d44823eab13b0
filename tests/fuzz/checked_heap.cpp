// Puts a marker around every block and checks it when the block is freed, as most texts do not live
// until the next check of all heaps. Freed memory is overwritten, so that a use after free reads
// garbage.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t HeaderSize = 16;  // keeps the blocks aligned
constexpr std::uint64_t Mark = 0xA5C3'5A3C'96E1'1E69;
constexpr int FreedByte = 0xDD;

void* Allocate(std::size_t size) {
    auto* const block = static_cast<char*>(std::malloc(HeaderSize + size + sizeof(Mark)));
    if (block == nullptr) {
        std::abort();
    }
    std::memcpy(block, &size, sizeof(size));
    std::memcpy(block + sizeof(size), &Mark, sizeof(Mark));
    std::memcpy(block + HeaderSize + size, &Mark, sizeof(Mark));
    return block + HeaderSize;
}

void Free(void* memory) {
    if (memory == nullptr) {
        return;
    }
    char* const block = static_cast<char*>(memory) - HeaderSize;
    std::size_t size = 0;
    std::memcpy(&size, block, sizeof(size));
    if (std::memcmp(block + sizeof(size), &Mark, sizeof(Mark)) != 0 ||
        std::memcmp(block + HeaderSize + size, &Mark, sizeof(Mark)) != 0) {
        std::printf("a block is damaged\n");
        std::abort();
    }
    std::memset(block, FreedByte, HeaderSize + size);
    std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}

void* operator new[](std::size_t size) {
    return Allocate(size);
}

void operator delete(void* memory) noexcept {
    Free(memory);
}

void operator delete[](void* memory) noexcept {
    Free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    Free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    Free(memory);
}
