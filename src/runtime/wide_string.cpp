// The one member of the wide string that the library's headers expect from the library. Linked into
// the program alone: the tests keep the library's.
//
// The library's object also holds every other member, compiled with exceptions, and so brings the
// unwinder along: an exe of 239 KB instead of 96 (GCC 14). GCC 12 has no such member.

#include <string>

#if defined(_GLIBCXX_RELEASE) && _GLIBCXX_RELEASE >= 13

// An explicit instantiation may name private members.
template void std::wstring::_M_replace_cold(wchar_t*, size_type, const wchar_t*, size_type,
                                            size_type);

#endif
