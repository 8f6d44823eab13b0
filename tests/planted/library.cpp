// A library for the tests to plant beside the program. Loaded, it leaves a file beside itself.

#include <string>

#include "base/owners.h"
#include "base/win.h"

// Called by the C runtime's start-up; no header declares it.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        std::wstring path(MAX_PATH, L'\0');
        path.resize(GetModuleFileNameW(instance, path.data(), MAX_PATH));
        path += L".loaded";
        const morvane::FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr,
                                                   CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    return TRUE;
}
