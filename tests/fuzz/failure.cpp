#include "fuzz/failure.h"

#include <atomic>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <mutex>
#include <thread>
#include <utility>

#include "base/win.h"
#include "support/test_files.h"

namespace morvane::test {
namespace {

constexpr int CrashStatus = 3;
constexpr DWORD PatienceMilliseconds = 10'000;

struct Input {
    std::uint32_t seed = 0;
    std::string document;
    std::string text;
};

// A separate thread watches the clock and reports the input being processed. Nothing is allocated
// or freed under the lock: that may be what fails, and the report needs the lock.
struct Progress {
    std::wstring folder;
    std::atomic<ULONGLONG> since = 0;
    std::mutex mutex;
    Input input;
    bool reported = false;
};

Progress& Current() {
    static Progress progress;
    return progress;
}

void Save(const char* what, const std::wstring& path, std::string_view bytes) {
    const bool saved = WriteFileBytes(path, bytes);
    std::printf(saved ? "the %s is saved as %ls\n" : "cannot save the %s as %ls\n", what,
                path.c_str());
}

[[noreturn]] void EndWith(const char* what) {
    ReportFailure(what);
    // Destructors must not run in whatever state the program is in.
    ExitProcess(CrashStatus);
}

LONG WINAPI OnFault(EXCEPTION_POINTERS* fault) {
    switch (fault->ExceptionRecord->ExceptionCode) {
        case EXCEPTION_ILLEGAL_INSTRUCTION:
            EndWith("undefined behaviour (trap)");
        case EXCEPTION_ACCESS_VIOLATION:
            EndWith("access beyond the text, or through a null pointer");
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
        // Read before the clock: an input noted in between would have a later time.
        const ULONGLONG since = Current().since;
        if (GetTickCount64() - since > PatienceMilliseconds) {
            EndWith("timeout");
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

void NoteInput(std::uint32_t seed, std::string document) {
    Progress& current = Current();
    Input input{seed, std::move(document), {}};
    const std::scoped_lock lock(current.mutex);
    std::swap(current.input, input);
    current.since = GetTickCount64();
}

void NoteText(std::string printed) {
    Progress& current = Current();
    const std::scoped_lock lock(current.mutex);
    current.input.text.swap(printed);
}

void ReportFailure(std::string_view wrong) {
    Progress& current = Current();
    Input input;
    {
        const std::scoped_lock lock(current.mutex);
        if (std::exchange(current.reported, true)) {
            return;
        }
        std::swap(input, current.input);
    }
    std::printf("\nFAILED, seed %" PRIu32 ": %.*s\n", input.seed, static_cast<int>(wrong.size()),
                wrong.data());
    const std::wstring name = L"document-seed-" + std::to_wstring(input.seed);
    Save("document", current.folder + L"\\" + name + L".txt", input.document);
    if (!input.text.empty()) {
        Save("text", current.folder + L"\\" + name + L".text", input.text);
    }
    static_cast<void>(std::fflush(stdout));
}

}  // namespace morvane::test
