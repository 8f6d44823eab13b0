#pragma once

#include "base/owners.h"
#include "base/win.h"

namespace morvane::test {

// Owns a window of the calling thread; only that thread can destroy it.
struct WindowTraits : NullableTraits<HWND> {
    static void Close(HWND window) noexcept { DestroyWindow(window); }
};
using WindowOwner = Owner<WindowTraits>;

// An invisible window, for code that needs an owner window; empty on failure.
[[nodiscard]] inline WindowOwner MessageOnlyWindow(const wchar_t* className = L"STATIC") {
    return WindowOwner(CreateWindowExW(0, className, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                       GetModuleHandleW(nullptr), nullptr));
}

}  // namespace morvane::test
