#include "cost/call_watch.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base/win.h"
#include "support/import_table.h"
#include "support/import_watch.h"

namespace morvane::test {
namespace {

template <typename Function, int Number>
ImportWatch<Function, Number> Counted(CallCounts& counts, const char* name) {
    return ImportWatch<Function, Number>(
        name, [counter = &counts[name]](auto... /*arguments*/) { ++*counter; });
}

int otherCalls = 0;

// Works for functions of any type: on this platform the caller cleans up its arguments.
INT_PTR WINAPI CountOther() {
    ++otherCalls;
    return 0;
}

bool IsAboutFiles(std::string_view name) {
    // A clock, which other threads of the test read.
    if (name == "GetSystemTimeAsFileTime") {
        return false;
    }
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
        const auto enumerate = Counted<decltype(&EnumWindows), 0>(counts, "EnumWindows");
        const auto visible = Counted<decltype(&IsWindowVisible), 1>(counts, "IsWindowVisible");
        const auto related = Counted<decltype(&GetWindow), 2>(counts, "GetWindow");
        const auto className = Counted<decltype(&GetClassNameW), 3>(counts, "GetClassNameW");
        const auto title = Counted<decltype(&GetWindowTextW), 4>(counts, "GetWindowTextW");
        const auto alive = Counted<decltype(&IsWindow), 5>(counts, "IsWindow");
        const auto iconic = Counted<decltype(&IsIconic), 6>(counts, "IsIconic");
        const auto frame = Counted<decltype(&GetWindowRect), 7>(counts, "GetWindowRect");
        const auto place = Counted<decltype(&SetWindowPos), 8>(counts, "SetWindowPos");
        const auto open = Counted<decltype(&CreateFileW), 9>(counts, "CreateFileW");
        const auto read = Counted<decltype(&ReadFile), 10>(counts, "ReadFile");
        const auto size = Counted<decltype(&GetFileSizeEx), 11>(counts, "GetFileSizeEx");
        const auto close = Counted<decltype(&CloseHandle), 12>(counts, "CloseHandle");
        const auto find = Counted<decltype(&GetFileAttributesW), 13>(counts, "GetFileAttributesW");
        const auto empty = Counted<decltype(&SetEndOfFile), 14>(counts, "SetEndOfFile");
        const auto write = Counted<decltype(&WriteFile), 15>(counts, "WriteFile");
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
