#pragma once

#include <functional>
#include <string>
#include <utility>

#include "support/import_patch.h"

namespace morvane::test {

// Passes the arguments of every call of a platform function to a watcher, just before the call goes
// to the platform. Only one watch at a time per function type.
template <typename Function>
class ImportWatch;

template <typename Result, typename... Arguments>
class ImportWatch<Result(WINAPI*)(Arguments...)> {
public:
    using Watcher = std::function<void(Arguments...)>;

    ImportWatch(const std::string& name, Watcher watcher) : patch_(name, Call) {
        original = patch_.Original();
        current = std::move(watcher);
    }

private:
    using Function = Result(WINAPI*)(Arguments...);

    static Result WINAPI Call(Arguments... arguments) {
        current(arguments...);
        return original(arguments...);
    }

    static inline Function original = nullptr;
    static inline Watcher current;

    ImportPatch<Function> patch_;
};

}  // namespace morvane::test
