#pragma once

#include <array>
#include <cstddef>

#include "base/win.h"
#include "support/refusal.h"

// The program with faults: morvane_faulty.exe is made of the program's very objects and of what is
// here, which exchanges platform functions in its import table before the program begins.
//
// MORVANE_FAULTS names what fails, parted by commas:
//
//   SetTimer            every call fails
//   SetTimer@2          the second call fails
//   SetTimer@2-         the second call and all later ones fail
//   SetTimer@2-5        the second to the fifth call fail
//   SetTimer@0          no call fails; the calls are only noted
//   WriteFile=20        the disk takes 20 more bytes
//   GetSystemDirectoryW=16  writes 16 characters beyond the caller's buffer
//   LoadLibraryExW=1    looks for libraries beside the program first
//   ShellExecuteW=1     makes the library throw: at a text that is not there (1), at a place behind
//                       the end of one (2), at one longer than any can be (3)
//
// MORVANE_FAULT_REPORT is a file that gets a line per call of the named functions: the name, and
// "failed" or "passed". A plan that cannot be carried out ends the process with PlanFailed.
namespace morvane::faulty {

inline constexpr UINT PlanFailed = 99;

// One function that can be made to fail.
struct Fault {
    const char* name;
    void* replacement;
    void* original = nullptr;
    unsigned calls = 0;
    unsigned firstFailing = 0;  // counted from 1
    unsigned lastFailing = 0;
    unsigned amount = 0;  // what stands behind "="
};

// Counts and notes a call; true when it has to fail.
bool MustFail(Fault& fault);

// A function's name as a template argument.
template <std::size_t Length>
struct Name {
    std::array<char, Length> text{};
    // cppcheck-suppress noExplicitConstructor ; likewise
    // NOLINTNEXTLINE(google-explicit-constructor,cppcoreguidelines-avoid-c-arrays): from a literal.
    consteval Name(const char (&literal)[Length]) {
        for (std::size_t i = 0; i < Length; ++i) {
            text.at(i) = literal[i];
        }
    }
};

// A function of that name and type which fails when it has to.
template <Name FunctionName, typename Function, auto Failure, DWORD Error>
struct Failing;

template <Name FunctionName, typename Result, typename... Arguments, auto Failure, DWORD Error>
struct Failing<FunctionName, Result(WINAPI*)(Arguments...), Failure, Error> {
    static inline Fault fault{.name = FunctionName.text.data(), .replacement = nullptr};

    static Result WINAPI Call(Arguments... arguments) {
        if (!MustFail(fault)) {
            return reinterpret_cast<Result(WINAPI*)(Arguments...)>(fault.original)(arguments...);
        }
        return test::Refusal<Result(WINAPI*)(Arguments...), Failure, Error>::Call(arguments...);
    }

    static Fault* Entry() {
        fault.replacement = reinterpret_cast<void*>(&Call);
        return &fault;
    }
};

}  // namespace morvane::faulty
