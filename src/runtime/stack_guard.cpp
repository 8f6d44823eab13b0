// The stack guard's value and its failure handler. Linked into the program alone: the tests keep
// the runtime's.
//
// libssp takes the value from the cryptographic service before the program's first statement. That
// loads libraries which are not KnownDLLs, so one planted beside a portable program would run. The
// value below needs no library, and the exe is no larger for it (GCC 12: 97.3 KB instead of 97.8;
// GCC 14: 95.7 KB both ways).

#include <cstdint>

#if defined(__GLIBCXX__)

#include "base/win.h"

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming):
// not our names.
extern "C" {

std::uintptr_t __stack_chk_guard = 0;

// GCOVR_EXCL_START: a process that ends at once writes no counters, and the build that counts has
// no checked calls.

// The cookie was overwritten: trust nothing, call nothing; int 29h is __fastfail.
[[noreturn]] void __stack_chk_fail() {
    constexpr unsigned CookieCheckFailure = 2;  // FAST_FAIL_STACK_COOKIE_CHECK_FAILURE
    // NOLINTNEXTLINE(hicpp-no-assembler): no call that could be diverted.
    __asm__ volatile("int $0x29" : : "c"(CookieCheckFailure));
    __builtin_unreachable();
}

// For a checked call that would write beyond its buffer. Declared like this by the headers.
__attribute__((noreturn)) void __chk_fail() {
    __stack_chk_fail();
}

// GCOVR_EXCL_STOP

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)

namespace morvane {
namespace {

std::uint64_t Mix(std::uint64_t value) {
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31U);
}

// From what differs between starts and cannot be known to a file or a window title: the time,
// process and thread identifiers, the address of the stack. Runs before all other constructors and
// is not guarded itself.
__attribute__((constructor(101), no_stack_protector)) void ChooseStackGuard() {
    LARGE_INTEGER counter{};
    FILETIME time{};
    QueryPerformanceCounter(&counter);
    GetSystemTimeAsFileTime(&time);
    std::uint64_t value = Mix(static_cast<std::uint64_t>(counter.QuadPart));
    value = Mix(value ^ time.dwLowDateTime ^ (std::uint64_t{time.dwHighDateTime} << 32U));
    value = Mix(value ^ GetCurrentProcessId() ^ (std::uint64_t{GetCurrentThreadId()} << 32U));
    value = Mix(value ^ reinterpret_cast<std::uintptr_t>(&counter));
    // A zero as the lowest UTF-16 unit, so that no copied string can reproduce the value.
    constexpr std::uint64_t WithoutLowestUnit = ~std::uint64_t{0xFFFF};
    __stack_chk_guard = value & WithoutLowestUnit;
}

}  // namespace
}  // namespace morvane

#endif
