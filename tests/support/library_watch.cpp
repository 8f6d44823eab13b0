#include "support/library_watch.h"

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "base/owners.h"

namespace morvane::test {

struct LibraryWatch::Shared {
    mutable std::mutex mutex;
    std::vector<std::wstring> files;
    std::atomic<bool> watching = false;
    std::atomic<bool> failed = false;
    std::atomic<bool> ending = false;
    std::thread thread;
};

namespace {

constexpr DWORD PollMilliseconds = 20;

std::wstring FileOf(HANDLE file) {
    std::wstring path(1024, L'\0');
    const DWORD length = GetFinalPathNameByHandleW(
        file, path.data(), static_cast<DWORD>(path.size()), FILE_NAME_NORMALIZED);
    path.resize(length < path.size() ? length : 0);
    return path;
}

// How to continue the process: its exceptions are left to it, except for the breakpoint that
// attaching causes.
DWORD Handle(LibraryWatch::Shared& shared, const DEBUG_EVENT& event) {
    switch (event.dwDebugEventCode) {
        case CREATE_PROCESS_DEBUG_EVENT: {
            const KernelHandle file(event.u.CreateProcessInfo.hFile);
            return DBG_CONTINUE;
        }
        case LOAD_DLL_DEBUG_EVENT: {
            const KernelHandle file(event.u.LoadDll.hFile);
            const std::scoped_lock lock(shared.mutex);
            shared.files.push_back(FileOf(file.get()));
            return DBG_CONTINUE;
        }
        case EXCEPTION_DEBUG_EVENT:
            if (event.u.Exception.ExceptionRecord.ExceptionCode == EXCEPTION_BREAKPOINT) {
                // Comes once everything loaded so far has been reported.
                shared.watching = true;
                return DBG_CONTINUE;
            }
            return DBG_EXCEPTION_NOT_HANDLED;
        default:
            return DBG_CONTINUE;
    }
}

// Only the thread that attached receives debug events.
void Watch(LibraryWatch::Shared& shared, DWORD processId) {
    if (DebugActiveProcess(processId) == FALSE) {
        shared.failed = true;
        return;
    }
    DebugSetProcessKillOnExit(FALSE);
    bool exited = false;
    while (!shared.ending && !exited) {
        DEBUG_EVENT event{};
        if (WaitForDebugEvent(&event, PollMilliseconds) != FALSE) {
            exited = event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT;
            ContinueDebugEvent(event.dwProcessId, event.dwThreadId, Handle(shared, event));
        }
    }
    DebugActiveProcessStop(processId);
}

}  // namespace

LibraryWatch::LibraryWatch(DWORD processId) : shared_(std::make_unique<Shared>()) {
    Shared& shared = *shared_;
    shared.thread = std::thread([&shared, processId] { Watch(shared, processId); });
    while (!shared.watching && !shared.failed) {
        std::this_thread::yield();
    }
    if (shared.failed) {
        shared.thread.join();
        throw std::runtime_error("the process cannot be watched");
    }
}

LibraryWatch::~LibraryWatch() {
    shared_->ending = true;
    shared_->thread.join();
}

std::vector<std::wstring> LibraryWatch::Files() const {
    const std::scoped_lock lock(shared_->mutex);
    return shared_->files;
}

}  // namespace morvane::test
