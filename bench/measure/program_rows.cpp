#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "base/owners.h"
#include "base/win.h"
#include "measure/rows.h"
#include "measure/scene.h"
#include "support/child_process.h"
#include "support/program.h"
#include "support/test_environment.h"
#include "support/tray.h"
#include "support/wait.h"
#include "support/window_state.h"

#include <psapi.h>
#include <tlhelp32.h>

namespace morvane::bench {

namespace {

constexpr wchar_t BareClass[] = L"MorvaneBareWindow";
constexpr wchar_t ControlClass[] = L"MorvaneHiddenWindow";
constexpr int IdleWindows = 50;
constexpr int EntryCount = 100;
constexpr int IdleParts = 15;
constexpr double RequestsOfOne = 2;  // per second, to each window
constexpr double MicrosecondsPerSecond = 1e6;

std::wstring ShippedProgram() {
    return test::RequiredPath(L"MORVANE_TEST_PROGRAM");
}

std::wstring BarePath() {
    return test::RequiredPath(L"MORVANE_BENCH_BARE");
}

// Ends one of our programs through its message-only window.
void Close(const test::ChildProcess& child, const wchar_t* className) {
    PostMessageW(FindWindowExW(HWND_MESSAGE, nullptr, className, nullptr), WM_CLOSE, 0, 0);
    Require(test::WaitForObject(child.process.get()), "the program ends");
}

// From the call that starts a program until the shell holds its icon.
double TimeToIcon(const std::wstring& path, const wchar_t* className) {
    const std::int64_t start = Ticks();
    const test::ChildProcess child = test::StartProcess(path, L"");
    Require(test::WaitUntil([&] {
                HWND const owner = FindWindowExW(HWND_MESSAGE, nullptr, className, nullptr);
                return owner != nullptr && test::TrayIconPresent(owner);
            }),
            "an icon comes");
    const double time = Microseconds(Ticks() - start);
    // Its first pass and its message loop come after the icon.
    static_cast<void>(WaitForInputIdle(child.process.get(), INFINITE));
    Close(child, className);
    return time;
}

// Private bytes of a process.
double MemoryOf(const test::ChildProcess& child) {
    PROCESS_MEMORY_COUNTERS counters{};
    Require(GetProcessMemoryInfo(child.process.get(), &counters, sizeof(counters)) != FALSE,
            "memory of a process");
    return static_cast<double>(counters.PagefileUsage);
}

// The processor time of a process so far, in microseconds, in steps of 10 milliseconds. Summed up
// over its threads, none of which may end: Wine 8.0 and 10.0 do not know the times of another
// process as a whole.
double ProcessorTime(const test::ChildProcess& child) {
    constexpr double UnitsPerMicrosecond = 10;
    const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    double units = 0;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Thread32First(snapshot.get(), &entry); more != FALSE;
         more = Thread32Next(snapshot.get(), &entry)) {
        if (entry.th32OwnerProcessID != child.id) {
            continue;
        }
        const KernelHandle thread(OpenThread(THREAD_QUERY_INFORMATION, FALSE, entry.th32ThreadID));
        FILETIME created{};
        FILETIME ended{};
        std::array<FILETIME, 2> spent{};
        if (GetThreadTimes(thread.get(), &created, &ended, spent.data(), &spent.back()) != FALSE) {
            for (const FILETIME& time : spent) {
                units += static_cast<double>(std::bit_cast<std::uint64_t>(time));
            }
        }
    }
    Require(units > 0, "processor time of a process");
    return units / UnitsPerMicrosecond;
}

// The bare loop keeps to the windows it found at its start: a later one is pinned by the program
// alone.
void RequireNewOnesPinned(test::Actor& actor) {
    const std::vector<HWND> late = AddWindows(actor, 1, PinnedTitle);
    Require(test::WaitUntil([&] { return test::IsTopmost(late.front()); }), "the program pins");
    actor.Destroy(late.front());
}

void LetPass(std::chrono::milliseconds duration) {
    static_cast<void>(test::WaitUntil([] { return false; }, duration));
}

}  // namespace

void MeasureStart(const Plan& plan) {
    Announce("from the start to the icon");
    BindEngine("");
    Pairs pairs;
    for (int repetition = 0; repetition <= plan.repetitions; ++repetition) {
        const bool oursFirst = repetition % 2 != 0;
        double ours = oursFirst ? TimeToIcon(ShippedProgram(), ControlClass) : 0;
        const double bare = TimeToIcon(BarePath(), BareClass);
        if (!oursFirst) {
            ours = TimeToIcon(ShippedProgram(), ControlClass);
        }
        if (repetition > 0) {
            pairs.ours.push_back(ours);
            pairs.bare.push_back(bare);
        }
    }
    Emit("start", pairs);
}

void MeasureIdle(const Plan& plan) {
    test::Actor actor;
    const std::vector<HWND> windows = AddWindows(actor, IdleWindows, PinnedTitle);
    BindEngine(EntriesWithMatch(EntryCount));

    const test::ChildProcess bare = test::StartProcess(
        BarePath(), std::wstring(1, *PinnedTitle) + std::to_wstring(IdleWindows));
    Require(test::WaitUntil(
                [&] { return std::all_of(windows.begin(), windows.end(), test::IsTopmost); }),
            "the bare loop pins");
    const test::ChildProcess ours = test::StartProcess(ShippedProgram(), L"");
    RequireNewOnesPinned(actor);

    const std::chrono::milliseconds whole = std::chrono::seconds(plan.idleSeconds);
    const std::chrono::milliseconds part = whole / IdleParts;
    Pairs times;
    Pairs memory;
    actor.ForgetRecords(windows.front());
    const std::int64_t start = Ticks();
    double ourTime = ProcessorTime(ours);
    double bareTime = ProcessorTime(bare);
    for (int done = 0; done < IdleParts; ++done) {
        Announce("idle for " + std::to_string(plan.idleSeconds) + " seconds, part " +
                 std::to_string(done + 1) + " of " + std::to_string(IdleParts));
        LetPass(part);
        times.ours.push_back(ProcessorTime(ours) - ourTime);
        times.bare.push_back(ProcessorTime(bare) - bareTime);
        ourTime += times.ours.back();
        bareTime += times.bare.back();
        memory.ours.push_back(MemoryOf(ours));
        memory.bare.push_back(MemoryOf(bare));
    }
    const double seconds = Microseconds(Ticks() - start) / MicrosecondsPerSecond;
    const auto requests = static_cast<double>(actor.Requests(windows.front()).size());
    Require(requests > seconds * RequestsOfOne, "both pin until the end");
    Emit("idle_time", {{"ours", times.ours}, {"bare", times.bare}, {"seconds", {seconds}}});
    Emit("idle_memory", memory);
    Close(bare, BareClass);
    Close(ours, ControlClass);
}

}  // namespace morvane::bench
