#pragma once

#include <functional>
#include <string>
#include <utility>

#include "support/import_patch.h"

namespace morvane::test {

// Passes the arguments of every call of a platform function to a watcher, just before the call goes
// to the platform. The number tells watches of functions of the same type apart that live at the
// same time.
template <typename Function, int Number = 0>
class ImportWatch;

template <typename Result, typename... Arguments, int Number>
class ImportWatch<Result(WINAPI*)(Arguments...), Number> {
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
