#pragma once

#include <chrono>
#include <string>

#include "base/owners.h"
#include "base/win.h"
#include "support/child_process.h"

namespace morvane::kit {

using Clock = std::chrono::steady_clock;

// Whatever is started from now on ends with this process, even if that is killed.
void EndEverythingWithUs();

enum class Happening { Line, Ended, TooLate, Stopped };

// Closing it ends what runs in it: only what has ended leaves alone what is put back.
struct JobTraits : NullableTraits<HANDLE> {
    static void Close(Handle job) noexcept;
};
using Job = Owner<JobTraits>;

// A program whose output, that for errors too, is read line by line. The destructor ends it and
// everything that it started.
class RunningProgram {
public:
    // Ends at the event.
    RunningProgram(const std::wstring& file, const std::wstring& arguments,
                   const test::Environment& changes, HANDLE stop);

    // The next line, without its end, or why there is none.
    [[nodiscard]] Happening Next(std::string& line, Clock::time_point limit);

    [[nodiscard]] bool Started() const { return static_cast<bool>(child_.process); }
    [[nodiscard]] DWORD ExitCode() const;

private:
    [[nodiscard]] bool ReadMore();
    [[nodiscard]] bool TakeLine(std::string& line);

    Job job_;
    KernelHandle output_;
    test::ChildProcess child_;
    HANDLE stop_;
    std::string unread_;
};

}  // namespace morvane::kit
