// Ends the program where libstdc++ would throw. Linked into the program alone: the tests keep the
// library's own handling and its messages.
//
// The program is compiled without exceptions, libstdc++ is not. Linking its unwinder, for
// exceptions that nothing catches, makes the exe 265 KB instead of 97 (GCC 12; GCC 14: 281 KB
// instead of 96).

#include <cstddef>

#if defined(__GLIBCXX__)

#include <cstdlib>
#include <new>

#include "base/win.h"

namespace morvane {
namespace {

// GCOVR_EXCL_START: a process that ends at once writes no counters.

// Not abort(): in a windowed program the runtime may show a message box first, and a program
// without memory must not wait for an answer.
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

// GCOVR_EXCL_STOP

}  // namespace
}  // namespace morvane

// Replacing these is allowed by the language.
// NOLINTBEGIN(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory): what all owners rest
// on.
void* operator new(std::size_t size) {
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    morvane::EndWithoutMemory();  // GCOVR_EXCL_LINE: likewise
}

// GCOVR_EXCL_START: without optimisation the compiler calls the other form.
void operator delete(void* memory) noexcept {
    std::free(memory);
}
// GCOVR_EXCL_STOP

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
// NOLINTEND(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)

// The functions by which the library's headers throw. If another one comes into use, the linker
// pulls in the library's object with all of them and reports these as defined twice: add it here.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl58-cpp,readability-identifier-naming): not our
// names.
// GCOVR_EXCL_START: they end the process at once, too.
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
// GCOVR_EXCL_STOP
// NOLINTEND(bugprone-reserved-identifier,cert-dcl58-cpp,readability-identifier-naming)

#endif
