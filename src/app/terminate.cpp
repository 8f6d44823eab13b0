// Part of the program alone: the tests keep the runtime's own handler and its messages.

#if defined(__MINGW32__)

#include <cstdlib>

namespace __gnu_cxx {

// The runtime's handler prints the name of the exception that nobody caught. A program without a
// console has nowhere to print it, and the code that decodes such names and formats the message
// makes up more than a quarter of the file. Declared by the runtime for this use: a program may
// bring its own.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the runtime's name, not ours.
void __verbose_terminate_handler() {
    std::abort();
}

}  // namespace __gnu_cxx

#endif
