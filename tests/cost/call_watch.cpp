#include "cost/call_watch.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base/win.h"
#include "support/import_patch.h"
#include "support/import_table.h"

namespace morvane::test {
namespace {

// Each counted function needs a replacement of its own. The number tells replacements for functions
// of the same type apart.
template <std::size_t Number, typename Function>
class CountedCall;

template <std::size_t Number, typename Result, typename... Arguments>
class CountedCall<Number, Result(WINAPI*)(Arguments...)> {
public:
    CountedCall(CallCounts& counts, const char* name) : patch_(name, Count) {
        original = patch_.Original();
        counter = &counts[name];
    }

private:
    using Function = Result(WINAPI*)(Arguments...);

    static Result WINAPI Count(Arguments... arguments) {
        ++*counter;
        return original(arguments...);
    }

    static inline Function original = nullptr;
    static inline int* counter = nullptr;

    ImportPatch<Function> patch_;
};

int otherCalls = 0;

// Works for functions of any type: on this platform the caller cleans up its arguments.
INT_PTR WINAPI CountOther() {
    ++otherCalls;
    return 0;
}

bool IsAboutFiles(std::string_view name) {
    constexpr std::string_view Words[] = {"File", "Directory", "Path", "Volume", "Profile"};
    return std::any_of(std::begin(Words), std::end(Words), [name](std::string_view word) {
        return name.find(word) != std::string_view::npos;
    });
}

// Replaces the functions that are not counted by name, so that no call goes unseen.
class OthersReplaced {
public:
    explicit OthersReplaced(const CallCounts& counted) {
        otherCalls = 0;
        for (const char* const library : {"user32.dll", "shell32.dll", "advapi32.dll"}) {
            for (const ImportedFunction& function : ImportsFrom(library)) {
                Replace(function, counted);
            }
        }
        for (const ImportedFunction& function : ImportsFrom("kernel32.dll")) {
            if (IsAboutFiles(function.name)) {
                Replace(function, counted);
            }
        }
    }
    OthersReplaced(const OthersReplaced&) = delete;
    OthersReplaced& operator=(const OthersReplaced&) = delete;
    OthersReplaced(OthersReplaced&&) = delete;
    OthersReplaced& operator=(OthersReplaced&&) = delete;
    ~OthersReplaced() {
        for (const Replaced& replaced : replaced_) {
            ExchangeImport(replaced.entry, replaced.original);
        }
    }

private:
    struct Replaced {
        void** entry;
        void* original;
    };

    void Replace(const ImportedFunction& function, const CallCounts& counted) {
        if (!counted.contains(std::string(function.name))) {
            replaced_.push_back(
                {function.entry,
                 ExchangeImport(function.entry, reinterpret_cast<void*>(&CountOther))});
        }
    }

    std::vector<Replaced> replaced_;
};

}  // namespace

CallCounts CountCalls(const std::function<void()>& work) {
    CallCounts counts;
    {
        const CountedCall<0, decltype(&EnumWindows)> enumerate(counts, "EnumWindows");
        const CountedCall<1, decltype(&IsWindowVisible)> visible(counts, "IsWindowVisible");
        const CountedCall<2, decltype(&GetWindow)> related(counts, "GetWindow");
        const CountedCall<3, decltype(&GetClassNameW)> className(counts, "GetClassNameW");
        const CountedCall<4, decltype(&GetWindowTextW)> title(counts, "GetWindowTextW");
        const CountedCall<5, decltype(&IsWindow)> alive(counts, "IsWindow");
        const CountedCall<6, decltype(&IsIconic)> iconic(counts, "IsIconic");
        const CountedCall<7, decltype(&GetWindowRect)> frame(counts, "GetWindowRect");
        const CountedCall<8, decltype(&SetWindowPos)> place(counts, "SetWindowPos");
        const CountedCall<9, decltype(&CreateFileW)> open(counts, "CreateFileW");
        const CountedCall<10, decltype(&ReadFile)> read(counts, "ReadFile");
        const CountedCall<11, decltype(&GetFileSizeEx)> size(counts, "GetFileSizeEx");
        const CountedCall<12, decltype(&CloseHandle)> close(counts, "CloseHandle");
        const CountedCall<13, decltype(&GetFileAttributesW)> find(counts, "GetFileAttributesW");
        const CountedCall<14, decltype(&SetEndOfFile)> empty(counts, "SetEndOfFile");
        const CountedCall<15, decltype(&WriteFile)> write(counts, "WriteFile");
        const OthersReplaced others(counts);
        work();
    }
    counts[OtherCalls] = otherCalls;
    std::erase_if(counts, [](const auto& entry) { return entry.second == 0; });
    return counts;
}

CallCounts Added(const CallCounts& counts, const CallCounts& base) {
    CallCounts added = counts;
    for (const auto& [name, count] : base) {
        added[name] -= count;
        if (added[name] < 0) {
            throw std::logic_error("fewer calls of " + name);
        }
    }
    std::erase_if(added, [](const auto& entry) { return entry.second == 0; });
    return added;
}

}  // namespace morvane::test
