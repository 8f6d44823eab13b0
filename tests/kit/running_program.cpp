#include "kit/running_program.h"

#include <utility>

#include "support/wait.h"

namespace morvane::kit {
namespace {

constexpr DWORD PollMilliseconds = 20;

// Of an ended program; nobody sees it.
constexpr UINT EndedCode = 1;

bool IsEmpty(HANDLE job) {
    JOBOBJECT_BASIC_ACCOUNTING_INFORMATION facts{};
    return QueryInformationJobObject(job, JobObjectBasicAccountingInformation, &facts,
                                     sizeof(facts), nullptr) == FALSE ||
           facts.ActiveProcesses == 0;
}

}  // namespace

void EndEverythingWithUs() {
    Job job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof(limits));
    AssignProcessToJobObject(job.get(), GetCurrentProcess());
    // Left open: closing it ends this process. Windows closes it at the end.
    static_cast<void>(job.release());
}

void JobTraits::Close(Handle job) noexcept {
    TerminateJobObject(job, EndedCode);
    static_cast<void>(test::WaitUntil([job] { return IsEmpty(job); }));
    CloseHandle(job);
}

RunningProgram::RunningProgram(const std::wstring& file, const std::wstring& arguments,
                               const test::Environment& changes, HANDLE stop)
    : job_(CreateJobObjectW(nullptr, nullptr)), stop_(stop) {
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    KernelHandle written;
    CreatePipe(output_.put(), written.put(), &inherited, 0);
    SetHandleInformation(output_.get(), HANDLE_FLAG_INHERIT, 0);
    const FileHandle nothing(CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                         &inherited, OPEN_EXISTING, 0, nullptr));
    // In the job before it runs, so that nothing it starts can stay outside.
    child_ =
        test::StartProcess(file, arguments, changes, {nothing.get(), written.get(), written.get()},
                           test::Begin::WhenResumed);
    if (Started()) {
        AssignProcessToJobObject(job_.get(), child_.process.get());
        ResumeThread(child_.thread.get());
    }
}

bool RunningProgram::ReadMore() {
    DWORD waiting = 0;
    if (PeekNamedPipe(output_.get(), nullptr, 0, nullptr, &waiting, nullptr) == FALSE ||
        waiting == 0) {
        return false;
    }
    std::string bytes(waiting, '\0');
    DWORD count = 0;
    ReadFile(output_.get(), bytes.data(), waiting, &count, nullptr);
    unread_.append(bytes, 0, count);
    return count > 0;
}

bool RunningProgram::TakeLine(std::string& line) {
    const std::size_t end = unread_.find('\n');
    if (end == std::string::npos) {
        return false;
    }
    line = unread_.substr(0, end);
    unread_.erase(0, end + 1);
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return true;
}

Happening RunningProgram::Next(std::string& line, Clock::time_point limit) {
    if (!Started()) {
        return Happening::Ended;
    }
    while (!TakeLine(line)) {
        // Asked first: what it wrote before its end is in the pipe by then.
        const HANDLE awaited[] = {stop_, child_.process.get()};
        const DWORD happened = WaitForMultipleObjects(2, awaited, FALSE, 0);
        if (happened == WAIT_OBJECT_0) {
            return Happening::Stopped;
        }
        if (ReadMore()) {
            continue;
        }
        if (happened == WAIT_OBJECT_0 + 1) {
            // The last line may have no end.
            line = std::exchange(unread_, {});
            return line.empty() ? Happening::Ended : Happening::Line;
        }
        if (Clock::now() > limit) {
            return Happening::TooLate;
        }
        WaitForMultipleObjects(2, awaited, FALSE, PollMilliseconds);
    }
    return Happening::Line;
}

DWORD RunningProgram::ExitCode() const {
    DWORD code = 0;
    GetExitCodeProcess(child_.process.get(), &code);
    return code;
}

}  // namespace morvane::kit
