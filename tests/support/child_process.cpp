#include "support/child_process.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string_view>

namespace morvane::test {
namespace {

constexpr int MaxRepeatsPerRun = 3;

struct EnvironmentBlockTraits : NullableTraits<wchar_t*> {
    static void Close(wchar_t* handle) noexcept { FreeEnvironmentStringsW(handle); }
};

bool SameVariable(std::wstring_view left, std::wstring_view right) {
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

// This process's variables with the changes applied, in the form CreateProcessW takes.
std::wstring ChangedEnvironment(const Environment& changes) {
    const Owner<EnvironmentBlockTraits> own(GetEnvironmentStringsW());
    std::wstring block;
    for (std::wstring_view entry(own.get()); !entry.empty();
         entry = std::wstring_view(entry.data() + entry.size() + 1)) {
        // Skips the first unit because hidden variables such as "=C:" begin with the sign.
        const std::wstring_view name = entry.substr(0, entry.find(L'=', 1));
        const bool changed = std::any_of(changes.begin(), changes.end(), [&](const auto& change) {
            return SameVariable(change.first, name);
        });
        if (!changed) {
            block.append(entry).push_back(L'\0');
        }
    }
    for (const auto& [name, value] : changes) {
        if (value) {
            block.append(name).append(L"=").append(*value).push_back(L'\0');
        }
    }
    block.push_back(L'\0');
    return block;
}

}  // namespace

ChildProcess StartProcess(const std::wstring& executable, const std::wstring& arguments,
                          const Environment& changes, const ChildPipes& pipes, Begin begin) {
    std::wstring commandLine = L"\"" + executable + L"\"";
    if (!arguments.empty()) {
        commandLine += L" " + arguments;
    }
    std::wstring environment = ChangedEnvironment(changes);
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    const bool redirected = pipes.input != nullptr;
    if (redirected) {
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdInput = pipes.input;
        start.hStdOutput = pipes.output;
        start.hStdError = pipes.error != nullptr ? pipes.error : GetStdHandle(STD_ERROR_HANDLE);
    }
    const DWORD flags = CREATE_UNICODE_ENVIRONMENT | DETACHED_PROCESS |
                        (begin == Begin::WhenResumed ? CREATE_SUSPENDED : 0);
    PROCESS_INFORMATION started{};
    // Without a console of its own, the child adds no console window to the desktop under test.
    const auto create = [&] {
        return CreateProcessW(executable.c_str(), commandLine.data(), nullptr, nullptr,
                              redirected ? TRUE : FALSE, flags, environment.data(), nullptr, &start,
                              &started) != FALSE;
    };
    // Once in thousands of starts under load, Wine 8.0 created no process; the next attempt worked.
    for (int repeat = 1; !create(); ++repeat) {
        if (repeat > MaxRepeatsPerStart) {
            return {};
        }
        CountRepeatedStart("no process, error " + std::to_string(GetLastError()));
    }
    return {KernelHandle(started.hProcess), started.dwProcessId, KernelHandle(started.hThread)};
}

void CountRepeatedStart(const std::string& reason) {
    static int repeats = 0;
    ++repeats;
    std::fprintf(stderr, "measured: start of a process repeated (%s): repeat %d of this run\n",
                 reason.c_str(), repeats);
    if (repeats > MaxRepeatsPerRun) {
        throw std::runtime_error("too many starts of processes had to be repeated");
    }
}

std::optional<std::wstring> EnvironmentVariable(const std::wstring& name) {
    const DWORD size = GetEnvironmentVariableW(name.c_str(), nullptr, 0);
    if (size == 0) {
        return std::nullopt;
    }
    std::wstring value(size, L'\0');
    value.resize(GetEnvironmentVariableW(name.c_str(), value.data(), size));
    return value;
}

std::wstring RequiredPath(const std::wstring& variable) {
    std::optional<std::wstring> path = EnvironmentVariable(variable);
    if (!path || path->empty()) {
        std::string name;
        std::transform(variable.begin(), variable.end(), std::back_inserter(name),
                       [](wchar_t unit) { return static_cast<char>(unit); });
        throw std::runtime_error("the environment variable " + name + " is not set");
    }
    return *path;
}

}  // namespace morvane::test
