#include "fuzz/failure.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <thread>
#include <utility>

#include "base/win.h"
#include "support/test_files.h"

namespace morvane::test {
namespace {

constexpr int CrashStatus = 3;
constexpr DWORD PatienceMilliseconds = 10'000;

struct Progress {
    std::wstring folder;
    std::uint32_t seed = 0;
    std::string_view document;
    std::atomic<ULONGLONG> since = 0;
};

Progress& Current() {
    static Progress progress;
    return progress;
}

[[noreturn]] void EndWith(const char* what) {
    ReportFailure(what);
    // The state of the program is not to be trusted with a proper end.
    ExitProcess(CrashStatus);
}

LONG WINAPI OnFault(EXCEPTION_POINTERS* fault) {
    switch (fault->ExceptionRecord->ExceptionCode) {
        case EXCEPTION_ILLEGAL_INSTRUCTION:
            EndWith("undefined behaviour (trap)");
        case EXCEPTION_ACCESS_VIOLATION:
            EndWith("access beyond the text or to nothing");
        default:
            EndWith("fault");
    }
}

void OnAbort(int /*signal*/) {
    EndWith("abort (an assertion of the library, a damaged block, or an exception)");
}

void WatchTheClock() {
    for (;;) {
        Sleep(PatienceMilliseconds / 10);
        if (GetTickCount64() - Current().since > PatienceMilliseconds) {
            EndWith("no end");
        }
    }
}

}  // namespace

void WatchForCrashes(std::wstring folder) {
    Current().folder = std::move(folder);
    Current().since = GetTickCount64();
    SetUnhandledExceptionFilter(OnFault);
    std::signal(SIGABRT, OnAbort);
    std::thread(WatchTheClock).detach();
}

void NoteInput(std::uint32_t seed, std::string_view document) {
    Progress& current = Current();
    current.seed = seed;
    current.document = document;
    current.since = GetTickCount64();
}

void ReportFailure(std::string_view wrong) {
    const Progress& current = Current();
    const std::wstring name = L"document-" + std::to_wstring(current.seed) + L".txt";
    const bool saved = WriteFileBytes(current.folder + L"\\" + name, current.document);
    std::printf("\nFAILED, seed %u: %.*s\n", static_cast<unsigned>(current.seed),
                static_cast<int>(wrong.size()), wrong.data());
    std::printf("%s %ls\\%ls\n", saved ? "the document is saved as" : "cannot save the document as",
                current.folder.c_str(), name.c_str());
    static_cast<void>(std::fflush(stdout));
}

}  // namespace morvane::test
