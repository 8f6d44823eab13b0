#include "support/notepad.h"

#include <algorithm>

#include "base/owners.h"
#include "support/test_environment.h"
#include "support/window_state.h"

// Needs the declarations above.
#include <tlhelp32.h>

namespace morvane::test {

std::vector<DWORD> NotepadProcesses() {
    std::vector<DWORD> processes;
    const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot.get(), &entry); more != FALSE;
         more = Process32NextW(snapshot.get(), &entry)) {
        if (CompareStringOrdinal(static_cast<const wchar_t*>(entry.szExeFile), -1, L"notepad.exe",
                                 -1, TRUE) == CSTR_EQUAL) {
            processes.push_back(entry.th32ProcessID);
        }
    }
    return processes;
}

std::vector<HWND> NotepadWindows() {
    const std::vector<DWORD> processes = NotepadProcesses();
    std::vector<HWND> windows = TopLevelWindows();
    std::erase_if(windows, [&processes](HWND window) {
        return IsWindowVisible(window) == FALSE ||
               std::ranges::find(processes, ProcessOf(window)) == processes.end();
    });
    return windows;
}

void EndNotepads() {
    if (!DisposableProfile()) {
        return;  // they are the user's
    }
    for (const DWORD id : NotepadProcesses()) {
        const KernelHandle process(OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
        TerminateProcess(process.get(), 0);
        WaitForSingleObject(process.get(), 5'000);
    }
}

}  // namespace morvane::test
