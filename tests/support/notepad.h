#pragma once

#include <vector>

#include "base/win.h"

// The editor that the program opens its file with. The session is private, so the program under
// test has started every Notepad in it.
namespace morvane::test {

[[nodiscard]] std::vector<DWORD> NotepadProcesses();
[[nodiscard]] std::vector<HWND> NotepadWindows();  // visible ones
void EndNotepads();

}  // namespace morvane::test
