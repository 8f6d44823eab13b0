#pragma once

#include <array>
#include <cstddef>

#include "base/win.h"
#include "support/refusal.h"

// morvane_faulty.exe is made of the program's own object files and of this folder, which replaces
// platform functions in its import table before the program begins.
//
// MORVANE_FAULTS lists what fails, separated by commas:
//
//   SetTimer            every call fails
//   SetTimer@2          the second call fails
//   SetTimer@2-         the second call and all later ones fail
//   SetTimer@2-5        the second to the fifth call fail
//   SetTimer@0          no call fails; the calls are only recorded
//   WriteFile=20        the disk has room for 20 more bytes
//   GetSystemDirectoryW=16  writes 16 characters past the caller's buffer
//   LoadLibraryExW=1    searches the program's folder first
//   ShellExecuteW=1     makes the library throw: for a string from a null pointer (1), for a
//                       position past the end (2), for an impossible length (3)
//
// MORVANE_FAULT_REPORT names a file that gets a line per call of the listed functions: the name,
// and "failed" or "passed". A call of ShellExecuteW adds lines with its verb, file and parameters.
// An invalid plan ends the process with PlanFailed.
//
// While a test records the tray (support/tray_relay.h), calls that do not fail go to its recorder.
namespace morvane::faulty {

inline constexpr UINT PlanFailed = 99;

// One function that can be made to fail.
struct Fault {
    const char* name = nullptr;
    void* replacement = nullptr;
    void* original = nullptr;
    unsigned calls = 0;
    unsigned firstFailing = 0;  // counted from 1
    unsigned lastFailing = 0;
    unsigned amount = 0;  // the number after "="

    template <typename Function>
    [[nodiscard]] Function Original() const {
        return reinterpret_cast<Function>(original);
    }
};

// Counts and records a call; true if it must fail.
bool MustFail(Fault& fault);

// Adds a line to the report.
void Note(const wchar_t* text);

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

// Replaces the function of this name and type, and fails when it must.
template <Name FunctionName, typename Function, auto Failure, DWORD Error>
struct Failing;

template <Name FunctionName, typename Result, typename... Arguments, auto Failure, DWORD Error>
struct Failing<FunctionName, Result(WINAPI*)(Arguments...), Failure, Error> {
    static inline Fault fault{FunctionName.text.data()};

    static Result WINAPI Call(Arguments... arguments) {
        using Function = Result(WINAPI*)(Arguments...);
        return MustFail(fault) ? test::Refusal<Function, Failure, Error>::Call(arguments...)
                               : fault.Original<Function>()(arguments...);
    }
};

}  // namespace morvane::faulty
