#pragma once

// Move-only owners: the type that holds a resource frees it, on every path. No implicit
// conversions, no copies. Call release() only after the call that takes the resource over has
// succeeded.

#include <utility>

#include "base/win.h"

namespace morvane {

// Owns one value of Traits::Handle; Traits::Empty() is the value that owns nothing and
// Traits::Close gives a value back.
template <typename Traits>
class Owner {
public:
    using Handle = typename Traits::Handle;

    Owner() noexcept = default;
    explicit Owner(Handle handle) noexcept : handle_(handle) {}
    Owner(Owner&& other) noexcept : handle_(other.release()) {}
    Owner& operator=(Owner&& other) noexcept {
        if (this != &other) {
            reset(other.release());
        }
        return *this;
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() { reset(); }

    [[nodiscard]] Handle get() const noexcept { return handle_; }
    [[nodiscard]] Handle operator->() const noexcept { return handle_; }
    [[nodiscard]] explicit operator bool() const noexcept { return handle_ != Traits::Empty(); }
    [[nodiscard]] Handle release() noexcept { return std::exchange(handle_, Traits::Empty()); }

    // For a call that stores a new value through a pointer; what was owned before is closed first.
    [[nodiscard]] Handle* put() noexcept {
        reset();
        return &handle_;
    }

    void reset(Handle handle = Traits::Empty()) noexcept {
        const Handle old = std::exchange(handle_, handle);
        if (old != Traits::Empty()) {
            Traits::Close(old);
        }
    }

private:
    Handle handle_ = Traits::Empty();
};

// For resources whose empty value is null.
template <typename Resource>
struct NullableTraits {
    using Handle = Resource;
    static Handle Empty() noexcept { return nullptr; }
};

struct ModuleTraits : NullableTraits<HMODULE> {
    static void Close(Handle handle) noexcept { FreeLibrary(handle); }
};
using Module = Owner<ModuleTraits>;

// Kernel objects whose creating call reports failure with null (mutexes).
struct KernelHandleTraits : NullableTraits<HANDLE> {
    static void Close(Handle handle) noexcept { CloseHandle(handle); }
};
using KernelHandle = Owner<KernelHandleTraits>;

// CreateFileW and FindFirstFileW report failure with INVALID_HANDLE_VALUE, not with null.
struct FileHandleTraits {
    using Handle = HANDLE;
    static Handle Empty() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Handle handle) noexcept { CloseHandle(handle); }
};
using FileHandle = Owner<FileHandleTraits>;

// Closed by FindClose, not by CloseHandle.
struct FindHandleTraits : FileHandleTraits {
    static void Close(Handle handle) noexcept { FindClose(handle); }
};
using FindHandle = Owner<FindHandleTraits>;

// Text that the shell allocates for its caller.
struct ShellTextTraits : NullableTraits<PWSTR> {
    static void Close(Handle handle) noexcept { CoTaskMemFree(handle); }
};
using ShellText = Owner<ShellTextTraits>;

template <typename Interface>
struct ComPointerTraits : NullableTraits<Interface*> {
    static void Close(Interface* handle) noexcept { handle->Release(); }
};
template <typename Interface>
using ComPointer = Owner<ComPointerTraits<Interface>>;

// COM on the calling thread, as a single-threaded apartment, for the life of the object.
class ComApartment {
public:
    ComApartment() noexcept : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ComApartment(ComApartment&&) = delete;
    ComApartment& operator=(ComApartment&&) = delete;
    ~ComApartment() {
        if (*this) {
            CoUninitialize();
        }
    }

    // S_FALSE (initialised before) is a success that has to be balanced too.
    [[nodiscard]] explicit operator bool() const noexcept { return SUCCEEDED(result_); }

private:
    HRESULT result_;
};

}  // namespace morvane
