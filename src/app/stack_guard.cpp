// Part of the program alone: the tests keep the runtime's own guard.
//
// The compiler puts a secret value behind the buffers of a function and looks at it before the
// function returns. The runtime's library fetches that value from the cryptographic service of
// Windows, before the program's first statement: libraries that Windows does not have among its
// known ones would be loaded then, and one beside a portable program would be taken for the
// system's. What is found here needs no library.

#if defined(__MINGW32__)

#include <cstdint>

#include "base/win.h"

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming):
// not our names.
extern "C" {

std::uintptr_t __stack_chk_guard = 0;

// A changed buffer's neighbour: nothing that the process holds can be relied on any more, so it
// ends without another call, by the instruction that Windows has for it.
[[noreturn]] void __stack_chk_fail() {
    constexpr unsigned CookieCheckFailure = 2;  // FAST_FAIL_STACK_COOKIE_CHECK_FAILURE
    // NOLINTNEXTLINE(hicpp-no-assembler): no call that could be diverted.
    __asm__ volatile("int $0x29" : : "c"(CookieCheckFailure));
    __builtin_unreachable();
}

// The same for a call that would write beyond its buffer. Declared like this by the headers.
__attribute__((noreturn)) void __chk_fail() {
    __stack_chk_fail();
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)

namespace morvane {

namespace {

std::uint64_t Mix(std::uint64_t value) {
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31U);
}

// What differs from start to start and is not known to a file or a title: moments in time, numbers
// that Windows gives out, and where it has put the stack. Before all other initialisations, and not
// guarded itself.
__attribute__((constructor(101), no_stack_protector)) void ChooseStackGuard() {
    LARGE_INTEGER counter{};
    FILETIME time{};
    QueryPerformanceCounter(&counter);
    GetSystemTimeAsFileTime(&time);
    std::uint64_t value = Mix(static_cast<std::uint64_t>(counter.QuadPart));
    value = Mix(value ^ time.dwLowDateTime ^ (std::uint64_t{time.dwHighDateTime} << 32U));
    value = Mix(value ^ GetCurrentProcessId() ^ (std::uint64_t{GetCurrentThreadId()} << 32U));
    value = Mix(value ^ reinterpret_cast<std::uintptr_t>(&counter));
    // Buffers here hold UTF-16: with a zero as its lowest unit no copied text runs over it
    // unnoticed.
    constexpr std::uint64_t WithoutLowestUnit = ~std::uint64_t{0xFFFF};
    __stack_chk_guard = value & WithoutLowestUnit;
}

}  // namespace

}  // namespace morvane

#endif
