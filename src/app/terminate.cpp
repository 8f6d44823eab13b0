// Part of the program alone: the tests keep the runtime's own handling and its messages.
//
// The product is compiled without exceptions, but the runtime's library is not. Whatever it throws,
// for want of memory or at a broken precondition, nobody catches, so it ends the program; the
// machinery that throws, describes and unwinds on the way there would be half of the file. What
// follows ends the program at once.

#if defined(__MINGW32__)

#include <cstddef>
#include <cstdlib>
#include <new>

#include "base/win.h"

namespace morvane {

namespace {

// Not by the runtime's abort, which may put up a message box in a windowed program first: one that
// has no memory left is not to wait for an answer.
[[noreturn]] void End(DWORD status) {
    TerminateProcess(GetCurrentProcess(), status);
    __builtin_unreachable();
}

[[noreturn]] void EndWithoutMemory() {
    End(STATUS_NO_MEMORY);
}

[[noreturn]] void EndAfterBrokenPrecondition() {
    End(STATUS_FATAL_APP_EXIT);
}

}  // namespace

}  // namespace morvane

// The language lets a program bring its own.
// NOLINTBEGIN(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory): what all owners rest
// on.
void* operator new(std::size_t size) {
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    morvane::EndWithoutMemory();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
// NOLINTEND(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)

// The functions by which the library's headers throw. When another one comes to be used, the linker
// takes the runtime's file of all of them and reports these here as defined twice: add the missing
// one then.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl58-cpp,readability-identifier-naming): not our
// names.
namespace std {

[[noreturn]] void __throw_logic_error(const char* /*what*/) {
    morvane::EndAfterBrokenPrecondition();
}

[[noreturn]] void __throw_length_error(const char* /*what*/) {
    morvane::EndWithoutMemory();
}

// NOLINTNEXTLINE(cert-dcl50-cpp): declared like this by the library.
[[noreturn]] void __throw_out_of_range_fmt(const char* /*format*/, ...) {
    morvane::EndAfterBrokenPrecondition();
}

[[noreturn]] void __throw_bad_alloc() {
    morvane::EndWithoutMemory();
}

[[noreturn]] void __throw_bad_array_new_length() {
    morvane::EndWithoutMemory();
}

}  // namespace std
// NOLINTEND(bugprone-reserved-identifier,cert-dcl58-cpp,readability-identifier-naming)

#endif
