#pragma once

// Memory that ends, or begins, at a page nobody may touch: a read beyond the text is a fault.

#include <cstddef>
#include <string_view>

#include "base/owners.h"
#include "base/win.h"

namespace morvane::test {

enum class Guard { BehindEnd, BeforeBegin };

class GuardedMemory {
public:
    // Capacity in bytes, rounded up to whole pages. Throws std::bad_alloc.
    explicit GuardedMemory(std::size_t capacity);

    // A copy of the text, valid until the next call. Throws std::length_error beyond the capacity.
    [[nodiscard]] std::string_view Place(std::string_view bytes, Guard guard);
    [[nodiscard]] std::wstring_view Place(std::wstring_view text, Guard guard);

private:
    struct PagesTraits {
        using Handle = char*;
        static Handle Empty() noexcept { return nullptr; }
        static void Close(Handle pages) noexcept { VirtualFree(pages, 0, MEM_RELEASE); }
    };

    [[nodiscard]] char* PlaceBytes(const void* bytes, std::size_t count, Guard guard);

    std::size_t capacity_ = 0;
    char* begin_ = nullptr;
    Owner<PagesTraits> pages_;
};

}  // namespace morvane::test
