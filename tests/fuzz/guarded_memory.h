#pragma once

// Memory that ends or begins at an inaccessible page, so that a read beyond the text faults.

#include <cstddef>
#include <string_view>

#include "base/owners.h"
#include "base/win.h"

namespace morvane::test {

enum class Guard { BehindEnd, BeforeBegin };

class GuardedMemory {
public:
    // The capacity is in bytes, rounded up to whole pages. Throws std::bad_alloc.
    explicit GuardedMemory(std::size_t capacity);

    // A copy of the text, valid until the next call. Throws std::length_error if it does not fit.
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
