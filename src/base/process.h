#pragma once

// What the process knows about itself. Written by the entry function, read by everybody; one
// thread.

#include <string>

#include "base/win.h"

namespace morvane {

inline constexpr wchar_t ControlWindowClass[] = L"MorvaneHiddenWindow";

struct ProcessState {
    HINSTANCE instance = nullptr;
    HWND controlWindow = nullptr;  // null until its creation has returned
};

[[nodiscard]] ProcessState& Process();

// The full path of the running program; empty when it is unknown or does not fit MAX_PATH.
[[nodiscard]] std::wstring ProgramPath();

}  // namespace morvane
