#pragma once

#include <string>
#include <vector>

#include "base/win.h"

// The editor that the program opens its file with. The session is private: every Notepad in it has
// been opened by the program under test.
namespace morvane::test {

[[nodiscard]] std::vector<DWORD> NotepadProcesses();
void EndNotepads();

// The command line as the process was started with; no documented call tells it to others.
[[nodiscard]] std::wstring CommandLineOf(HANDLE process);

}  // namespace morvane::test
