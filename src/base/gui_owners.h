#pragma once

// Owners of menus and of GDI objects, and the guards that go with them.

#include "base/owners.h"
#include "base/win.h"

namespace morvane {

// Never closed while selected into a device context, where DeleteObject fails: see SelectGuard.
template <typename GdiHandle>
struct GdiTraits : NullableTraits<GdiHandle> {
    static void Close(GdiHandle handle) noexcept { DeleteObject(handle); }
};
using Font = Owner<GdiTraits<HFONT>>;
using Brush = Owner<GdiTraits<HBRUSH>>;
using Pen = Owner<GdiTraits<HPEN>>;

// A menu that no other menu contains; DestroyMenu takes its submenus with it.
struct MenuTraits : NullableTraits<HMENU> {
    static void Close(Handle handle) noexcept { DestroyMenu(handle); }
};
using Menu = Owner<MenuTraits>;

// The device context of a window, or of the screen for null. May be empty.
class WindowDc {
public:
    explicit WindowDc(HWND window) noexcept : window_(window), dc_(GetDC(window)) {}
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;
    WindowDc(WindowDc&&) = delete;
    WindowDc& operator=(WindowDc&&) = delete;
    ~WindowDc() {
        if (*this) {
            ReleaseDC(window_, dc_);
        }
    }

    [[nodiscard]] HDC get() const noexcept { return dc_; }
    [[nodiscard]] explicit operator bool() const noexcept { return dc_ != nullptr; }

private:
    HWND window_;
    HDC dc_;
};

// Selects an object and puts the earlier one back. Declared after the object's owner, it ends
// before the object is deleted.
class SelectGuard {
public:
    SelectGuard(HDC dc, HGDIOBJ object) noexcept : dc_(dc), old_(SelectObject(dc, object)) {}
    SelectGuard(const SelectGuard&) = delete;
    SelectGuard& operator=(const SelectGuard&) = delete;
    SelectGuard(SelectGuard&&) = delete;
    SelectGuard& operator=(SelectGuard&&) = delete;
    ~SelectGuard() { SelectObject(dc_, old_); }

private:
    HDC dc_;
    HGDIOBJ old_;
};

}  // namespace morvane
