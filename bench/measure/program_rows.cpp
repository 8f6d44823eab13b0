// The start of the program, and the program and the bare loop idling side by side.

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "base/owners.h"
#include "base/win.h"
#include "measure/bench.h"
#include "support/child_process.h"
#include "support/test_environment.h"
#include "support/tray.h"
#include "support/wait.h"
#include "support/window_state.h"

#include <psapi.h>
#include <tlhelp32.h>

namespace morvane::bench {
namespace {

// A program that is measured from outside, and ended through its message-only window.
struct Contender {
    const wchar_t* variable;  // of the environment: where it is
    const wchar_t* className;
};

constexpr Contender Ours = {L"MORVANE_TEST_PROGRAM", L"MorvaneHiddenWindow"};
constexpr Contender Bare = {L"MORVANE_BENCH_BARE", L"MorvaneBareWindow"};

test::ChildProcess Start(const Contender& contender, const std::wstring& arguments = L"") {
    return test::StartProcess(test::RequiredPath(contender.variable), arguments);
}

HWND WindowOf(const Contender& contender) {
    return FindWindowExW(HWND_MESSAGE, nullptr, contender.className, nullptr);
}

void WaitForIcon(const Contender& contender) {
    Require(test::WaitUntil([&] {
                HWND const owner = WindowOf(contender);
                return owner != nullptr && test::TrayIconPresent(owner);
            }),
            "an icon comes");
}

// After the icon: its first pass and its message loop come later, and before the icon the process
// may be too young to be waited for.
void WaitUntilIdle(const test::ChildProcess& child) {
    constexpr DWORD Patience = 10'000;
    Require(WaitForInputIdle(child.process.get(), Patience) == 0, "the program comes to idle");
}

void Close(const Contender& contender, const test::ChildProcess& child) {
    PostMessageW(WindowOf(contender), WM_CLOSE, 0, 0);
    Require(test::WaitForObject(child.process.get()), "the program ends");
}

// From the call that starts a program until the shell holds its icon.
double TimeToIcon(const Contender& contender) {
    const Clock::time_point start = Clock::now();
    const test::ChildProcess child = Start(contender);
    WaitForIcon(contender);
    const double time = MicrosecondsSince(start);
    WaitUntilIdle(child);
    Close(contender, child);
    return time;
}

double PrivateBytes(const test::ChildProcess& child) {
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

}  // namespace

void MeasureStart(const Plan& plan) {
    Announce("from the start to the icon");
    BindEngine("");
    Emit(
        "start",
        InTurn(plan.repetitions, [] { return TimeToIcon(Ours); }, [] { return TimeToIcon(Bare); }));
}

void MeasureIdle(const Plan& plan) {
    constexpr int Windows = 50;
    // Long enough for some steps of 10 milliseconds of processor time.
    constexpr int SecondsPerPart = 4;
    constexpr int Requests = 3;  // per second and window: more than one of them makes alone
    test::Actor actor;
    std::vector<HWND> windows = AddWindows(actor, Windows, PinnedTitle);
    std::sort(windows.begin(), windows.end(), std::less<>());
    BindEngine(EntriesWithMatch());

    std::wstring handles;
    for (HWND const window : windows) {
        handles += std::to_wstring(reinterpret_cast<std::uintptr_t>(window)) + L" ";
    }
    const test::ChildProcess bare = Start(Bare, handles);
    Require(test::WaitUntil(
                [&] { return std::all_of(windows.begin(), windows.end(), test::IsTopmost); }),
            "the bare loop pins");
    const test::ChildProcess ours = Start(Ours);
    WaitForIcon(Ours);
    WaitUntilIdle(ours);

    Announce("idle for " + std::to_string(plan.idleSeconds) + " seconds");
    Pairs times;
    Pairs memory;
    actor.ForgetRecords(windows.front());
    double ourTime = ProcessorTime(ours);
    double bareTime = ProcessorTime(bare);
    for (int second = 0; second < plan.idleSeconds; second += SecondsPerPart) {
        static_cast<void>(
            test::WaitUntil([] { return false; }, std::chrono::seconds(SecondsPerPart)));
        times.ours.push_back(ProcessorTime(ours) - ourTime);
        times.bare.push_back(ProcessorTime(bare) - bareTime);
        ourTime += times.ours.back();
        bareTime += times.bare.back();
        memory.ours.push_back(PrivateBytes(ours));
        memory.bare.push_back(PrivateBytes(bare));
    }
    const auto requests = static_cast<int>(actor.Requests(windows.front()).size());
    Require(requests > plan.idleSeconds * Requests, "both pin until the end");
    Emit("idle_time", times);
    Emit("idle_memory", memory);
    Close(Bare, bare);
    Close(Ours, ours);
}

}  // namespace morvane::bench
