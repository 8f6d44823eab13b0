#include "fuzz/guarded_memory.h"

#include <cstring>
#include <new>
#include <stdexcept>

namespace morvane::test {
namespace {

constexpr std::size_t PageSize = 4096;

}  // namespace

GuardedMemory::GuardedMemory(std::size_t capacity)
    : capacity_((capacity + PageSize - 1) / PageSize * PageSize),
      // Everything is reserved as inaccessible; only the pages between the first and the last are
      // committed.
      pages_(static_cast<char*>(
          VirtualAlloc(nullptr, capacity_ + 2 * PageSize, MEM_RESERVE, PAGE_NOACCESS))) {
    if (!pages_ ||
        // cppcheck-suppress leakReturnValNotUsed ; the same pages, freed with the reservation
        VirtualAlloc(pages_.get() + PageSize, capacity_, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        throw std::bad_alloc();
    }
    begin_ = pages_.get() + PageSize;
}

char* GuardedMemory::PlaceBytes(const void* bytes, std::size_t count, Guard guard) {
    if (count > capacity_) {
        throw std::length_error("text too long for its guarded memory");
    }
    char* const place = guard == Guard::BehindEnd ? begin_ + (capacity_ - count) : begin_;
    if (count > 0) {
        std::memcpy(place, bytes, count);
    }
    return place;
}

std::string_view GuardedMemory::Place(std::string_view bytes, Guard guard) {
    return {PlaceBytes(bytes.data(), bytes.size(), guard), bytes.size()};
}

std::wstring_view GuardedMemory::Place(std::wstring_view text, Guard guard) {
    const void* const place = PlaceBytes(text.data(), text.size() * sizeof(wchar_t), guard);
    // Aligned: the capacity is a multiple of the unit's size.
    return {static_cast<const wchar_t*>(place), text.size()};
}

}  // namespace morvane::test
