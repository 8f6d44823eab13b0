#pragma once

// Libraries that the program can do without, reached at run time. Only the system folder is
// searched: a file of the same name beside a portable program must not be loaded.

#include <bit>

#include "base/owners.h"
#include "base/win.h"

namespace morvane {

// Empty when the system has no such library.
[[nodiscard]] inline Module LoadSystemLibrary(const wchar_t* name) {
    return Module(LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
}

// The exported function as a pointer of the given type; null when the library is empty or has no
// such export. Valid while the library is held.
template <typename FunctionPointer>
[[nodiscard]] FunctionPointer FindExport(const Module& library, const char* name) {
    return library ? std::bit_cast<FunctionPointer>(GetProcAddress(library.get(), name)) : nullptr;
}

}  // namespace morvane
