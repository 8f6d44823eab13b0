#include "support/unix_command.h"

#include <atomic>
#include <bit>
#include <charconv>
#include <optional>

#include "base/win.h"
#include "support/test_files.h"

namespace morvane::test {
namespace {

std::wstring TemporaryFile(const std::wstring& suffix) {
    static std::atomic<unsigned> counter = 0;
    std::wstring folder(MAX_PATH + 1, L'\0');
    folder.resize(GetTempPathW(static_cast<DWORD>(folder.size()), folder.data()));
    return folder + L"morvane-test-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
           std::to_wstring(++counter) + suffix;
}

struct TemporaryPath {
    explicit TemporaryPath(const std::wstring& suffix) : windows(TemporaryFile(suffix)) {}
    TemporaryPath(const TemporaryPath&) = delete;
    TemporaryPath& operator=(const TemporaryPath&) = delete;
    TemporaryPath(TemporaryPath&&) = delete;
    TemporaryPath& operator=(TemporaryPath&&) = delete;
    ~TemporaryPath() { DeleteFileW(windows.c_str()); }

    [[nodiscard]] std::string Shell() const { return QuotedForShell(UnixPath(windows)); }

    const std::wstring windows;
};

// Wine starts Unix programs by their path but returns no handle to wait for.
bool StartShell(const std::string& scriptPath) {
    const int units = MultiByteToWideChar(CP_UTF8, 0, scriptPath.data(),
                                          static_cast<int>(scriptPath.size()), nullptr, 0);
    std::wstring script(static_cast<std::size_t>(units), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, scriptPath.data(), static_cast<int>(scriptPath.size()),
                        script.data(), units);
    std::wstring commandLine = L"sh \"" + script + L"\"";
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    PROCESS_INFORMATION started{};
    return CreateProcessW(L"\\\\?\\unix\\bin\\sh", commandLine.data(), nullptr, nullptr, FALSE, 0,
                          nullptr, nullptr, &start, &started) != FALSE;
}

}  // namespace

UnixResult RunUnix(const std::string& shellLine, std::chrono::milliseconds timeout) {
    const TemporaryPath script(L".sh");
    const TemporaryPath output(L".out");
    const TemporaryPath code(L".code");
    if (UnixPath(script.windows).empty()) {
        return {};
    }
    // The exit code is renamed into place last: its appearance signals the end.
    const std::string lines = "( " + shellLine + "\n) > " + output.Shell() + " 2>&1\necho $? > " +
                              code.Shell() + ".part\nmv " + code.Shell() + ".part " + code.Shell() +
                              "\n";
    if (!WriteFileBytes(script.windows, lines) || !StartShell(UnixPath(script.windows))) {
        return {};
    }
    UnixResult result;
    if (WaitUntil([&] { return PathExists(code.windows); }, timeout)) {
        const std::string digits = ReadFileBytes(code.windows).value_or("");
        std::from_chars(digits.data(), digits.data() + digits.size(), result.exitCode);
        result.output = ReadFileBytes(output.windows).value_or("");
    }
    return result;
}

std::string UnixPath(const std::wstring& windowsPath) {
    using ConvertPath = char*(CDECL*)(const wchar_t*);
    const auto convert = std::bit_cast<ConvertPath>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name"));
    if (convert == nullptr) {
        return {};
    }
    char* path = convert(windowsPath.c_str());
    if (path == nullptr) {
        return {};
    }
    std::string result(path);
    HeapFree(GetProcessHeap(), 0, path);
    return result;
}

std::string QuotedForShell(const std::string& text) {
    std::string quoted = "'";
    for (const char unit : text) {
        quoted += unit == '\'' ? std::string("'\\''") : std::string(1, unit);
    }
    return quoted + "'";
}

}  // namespace morvane::test
