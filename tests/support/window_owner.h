#pragma once

#include "base/owners.h"
#include "base/win.h"

namespace morvane::test {

// Owns a window of the calling thread, which has to destroy it too.
struct WindowTraits {
    using Handle = HWND;
    static Handle Empty() noexcept { return nullptr; }
    static void Close(Handle window) noexcept { DestroyWindow(window); }
};
using WindowOwner = Owner<WindowTraits>;

// A window that nobody sees, of the class, for what needs one to belong to; empty on failure.
[[nodiscard]] inline WindowOwner MessageOnlyWindow(const wchar_t* className = L"STATIC") {
    return WindowOwner(CreateWindowExW(0, className, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                       GetModuleHandleW(nullptr), nullptr));
}

}  // namespace morvane::test
