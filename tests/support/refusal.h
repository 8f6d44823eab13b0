#pragma once

#include <type_traits>

#include "base/win.h"

namespace morvane::test {

template <typename Result, typename Value>
Result FailureResult(Value value) {
    if constexpr (std::is_pointer_v<Result> && std::is_integral_v<Value>) {
        return reinterpret_cast<Result>(static_cast<INT_PTR>(value));
    } else {
        return static_cast<Result>(value);
    }
}

// A function of the given type that imitates a failing platform function: it does nothing, sets the
// last error and returns the failure value.
template <typename Function, auto Failure, DWORD Error>
struct Refusal;

template <typename Result, typename... Arguments, auto Failure, DWORD Error>
struct Refusal<Result(WINAPI*)(Arguments...), Failure, Error> {
    static Result WINAPI Call(Arguments... /*arguments*/) {
        SetLastError(Error);
        if constexpr (!std::is_void_v<Result>) {
            return FailureResult<Result>(Failure);
        }
    }
};

// Imitates GetModuleFileNameW with a buffer that is too short.
inline DWORD WINAPI CutPath(HMODULE /*module*/, LPWSTR path, DWORD size) {
    path[0] = L'\0';
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
}

}  // namespace morvane::test
