#include "program/notepad.h"

#include <bit>

#include "base/owners.h"

// Needs the declarations above.
#include <tlhelp32.h>
#include <winternl.h>

namespace morvane::test {
namespace {

// Reads a value, or count units of text, from the other process's memory.
template <typename Value>
bool ReadFrom(HANDLE process, const void* address, Value* values, std::size_t count = 1) {
    SIZE_T bytes = 0;
    return ReadProcessMemory(process, address, values, count * sizeof(Value), &bytes) != FALSE &&
           bytes == count * sizeof(Value);
}

}  // namespace

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

void EndNotepads() {
    for (const DWORD id : NotepadProcesses()) {
        const KernelHandle process(OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
        TerminateProcess(process.get(), 0);
        WaitForSingleObject(process.get(), 5'000);
    }
}

std::wstring CommandLineOf(HANDLE process) {
    using Query = NTSTATUS(NTAPI*)(HANDLE, PROCESSINFOCLASS, PVOID, ULONG, PULONG);
    const auto query = std::bit_cast<Query>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryInformationProcess"));
    PROCESS_BASIC_INFORMATION basic{};
    PEB block{};
    RTL_USER_PROCESS_PARAMETERS parameters{};
    if (query == nullptr ||
        query(process, ProcessBasicInformation, &basic, sizeof(basic), nullptr) != 0 ||
        !ReadFrom(process, basic.PebBaseAddress, &block) ||
        !ReadFrom(process, block.ProcessParameters, &parameters)) {
        return L"(unknown)";
    }
    std::wstring text(parameters.CommandLine.Length / sizeof(wchar_t), L'\0');
    return ReadFrom(process, parameters.CommandLine.Buffer, text.data(), text.size())
               ? text
               : L"(unreadable)";
}

}  // namespace morvane::test
