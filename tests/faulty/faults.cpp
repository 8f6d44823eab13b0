// The functions that can be made to fail, each as Windows documents its failure.

#include <array>
#include <cstddef>
#include <string>

#include "base/win_shell.h"
#include "faulty/plan.h"

namespace morvane::faulty {
namespace {

// A disk that takes this many more bytes.
struct FullDisk {
    static inline Fault fault{"WriteFile"};
    static inline DWORD taken = 0;

    static BOOL WINAPI Call(HANDLE file, LPCVOID bytes, DWORD size, LPDWORD written,
                            LPOVERLAPPED overlapped) {
        const DWORD room = fault.amount - taken;
        const bool full = MustFail(fault) && room < size;
        const DWORD part = full ? room : size;
        if (part > 0) {
            const auto original = fault.Original<decltype(&WriteFile)>();
            if (original(file, bytes, part, written, overlapped) == FALSE) {
                return FALSE;
            }
            taken += part;
        }
        if (!full) {
            return TRUE;
        }
        SetLastError(ERROR_DISK_FULL);
        return FALSE;
    }
};

// Files that can be read but not written: without write permission, or in a read-only folder.
struct WriteProtection {
    static inline Fault fault{"CreateFileW"};

    static HANDLE WINAPI Call(LPCWSTR path, DWORD access, DWORD share,
                              LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                              HANDLE pattern) {
        if ((access & GENERIC_WRITE) != 0 && MustFail(fault)) {
            SetLastError(ERROR_ACCESS_DENIED);
            return INVALID_HANDLE_VALUE;
        }
        return fault.Original<decltype(&CreateFileW)>()(path, access, share, security, disposition,
                                                        flags, pattern);
    }
};

// Fails; with an amount, writes that many characters past its caller's buffer.
struct SystemDirectory {
    static inline Fault fault{"GetSystemDirectoryW"};

    static UINT WINAPI Call(LPWSTR path, UINT size) {
        if (!MustFail(fault)) {
            return fault.Original<decltype(&GetSystemDirectoryW)>()(path, size);
        }
        if (fault.amount == 0) {
            SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return 0;
        }
        // Through a pointer, as the compiler knows the sizes of objects.
        volatile wchar_t* const end = path + size;
        for (unsigned i = 0; i < fault.amount; ++i) {
            end[i] = L'x';
        }
        return 1;
    }
};

// Fails; with an amount, searches like a careless program: its own folder first.
struct LibraryLoading {
    static inline Fault fault{"LoadLibraryExW"};

    static HMODULE WINAPI Call(LPCWSTR name, HANDLE file, DWORD flags) {
        const bool fails = MustFail(fault);
        if (fails && fault.amount == 0) {
            SetLastError(ERROR_MOD_NOT_FOUND);
            return nullptr;
        }
        return fault.Original<decltype(&LoadLibraryExW)>()(name, file, fails ? 0 : flags);
    }
};

// Fails; with an amount, makes the runtime library throw, through the functions that a broken
// precondition in the program would call.
struct EditorStart {
    static inline Fault fault{"ShellExecuteW"};

    static HINSTANCE WINAPI Call(HWND owner, LPCWSTR operation, LPCWSTR file, LPCWSTR parameters,
                                 LPCWSTR folder, INT show) {
        const bool fails = MustFail(fault);
        for (const LPCWSTR text : {operation, file, parameters}) {
            Note(text);
        }
        if (!fails) {
            return fault.Original<decltype(&ShellExecuteW)>()(owner, operation, file, parameters,
                                                              folder, show);
        }
        std::wstring text(file);
        if (fault.amount == 1) {
            text.append(std::wstring(folder));
        } else if (fault.amount == 2) {
            text.erase(std::wstring::npos);
        } else if (fault.amount == 3) {
            text.reserve(std::wstring::npos);
        }
        SetLastError(ERROR_FILE_NOT_FOUND);
        return reinterpret_cast<HINSTANCE>(static_cast<INT_PTR>(SE_ERR_FNF));
    }
};

using AllocateFunction = void*(WINAPI*)(std::size_t);  // malloc, without its attributes

template <typename... Faults>
std::array<Fault*, sizeof...(Faults)> ListOf() {
    ((Faults::fault.replacement = reinterpret_cast<void*>(&Faults::Call)), ...);
    return {&Faults::fault...};
}

constexpr INT_PTR NoHandle = -1;  // INVALID_HANDLE_VALUE as a number

// Only functions that the program imports; any other name makes the plan invalid.
const auto AllFaults = ListOf<
    FullDisk, WriteProtection, SystemDirectory, LibraryLoading, EditorStart,
    // kernel32
    Failing<"CloseHandle", decltype(&CloseHandle), FALSE, ERROR_INVALID_HANDLE>,
    Failing<"CreateDirectoryW", decltype(&CreateDirectoryW), FALSE, ERROR_ACCESS_DENIED>,
    Failing<"CreateMutexW", decltype(&CreateMutexW), nullptr, ERROR_ACCESS_DENIED>,
    Failing<"DeleteFileW", decltype(&DeleteFileW), FALSE, ERROR_ACCESS_DENIED>,
    Failing<"FindFirstFileW", decltype(&FindFirstFileW), NoHandle, ERROR_ACCESS_DENIED>,
    Failing<"GetModuleFileNameW", decltype(&GetModuleFileNameW), 0U, ERROR_INSUFFICIENT_BUFFER>,
    Failing<"ReadFile", decltype(&ReadFile), FALSE, ERROR_CRC>,
    Failing<"RemoveDirectoryW", decltype(&RemoveDirectoryW), FALSE, ERROR_SHARING_VIOLATION>,
    Failing<"SetDefaultDllDirectories", decltype(&SetDefaultDllDirectories), FALSE,
            ERROR_INVALID_PARAMETER>,
    Failing<"SetEndOfFile", decltype(&SetEndOfFile), FALSE, ERROR_WRITE_PROTECT>,
    // msvcrt
    Failing<"malloc", AllocateFunction, nullptr, ERROR_NOT_ENOUGH_MEMORY>,
    // user32
    Failing<"CreatePopupMenu", decltype(&CreatePopupMenu), nullptr, ERROR_NOT_ENOUGH_MEMORY>,
    Failing<"CreateWindowExW", decltype(&CreateWindowExW), nullptr, ERROR_NOT_ENOUGH_MEMORY>,
    Failing<"EnumWindows", decltype(&EnumWindows), FALSE, ERROR_ACCESS_DENIED>,
    Failing<"GetCursorPos", decltype(&GetCursorPos), FALSE, ERROR_ACCESS_DENIED>,
    Failing<"GetForegroundWindow", decltype(&GetForegroundWindow), nullptr, ERROR_SUCCESS>,
    Failing<"GetMessageW", decltype(&GetMessageW), -1, ERROR_INVALID_WINDOW_HANDLE>,
    Failing<"RegisterClassW", decltype(&RegisterClassW), ATOM{0}, ERROR_NOT_ENOUGH_MEMORY>,
    Failing<"SetTimer", decltype(&SetTimer), 0U, ERROR_NOT_ENOUGH_MEMORY>,
    Failing<"SetWindowPos", decltype(&SetWindowPos), FALSE, ERROR_ACCESS_DENIED>,
    // shell32
    Failing<"SHGetFolderPathW", decltype(&SHGetFolderPathW), E_FAIL, ERROR_SUCCESS>,
    Failing<"SHGetKnownFolderPath", decltype(&SHGetKnownFolderPath), E_FAIL, ERROR_SUCCESS>,
    Failing<"Shell_NotifyIconW", decltype(&Shell_NotifyIconW), FALSE, ERROR_TIMEOUT>,
    // ole32
    Failing<"CoCreateInstance", decltype(&CoCreateInstance), REGDB_E_CLASSNOTREG, ERROR_SUCCESS>,
    Failing<"CoInitializeEx", decltype(&CoInitializeEx), E_OUTOFMEMORY, ERROR_SUCCESS>,
    Failing<"CoUninitialize", decltype(&CoUninitialize), 0, ERROR_SUCCESS>>();

// Initialised before wWinMain, and after the faults themselves.
const bool IsPlanCarriedOut = CarryOutPlan(AllFaults);

}  // namespace
}  // namespace morvane::faulty
