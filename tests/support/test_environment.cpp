#include "support/test_environment.h"

#include <stdexcept>
#include <utility>

#include "base/owners.h"
#include "base/win_shell.h"
#include "support/child_process.h"
#include "support/test_files.h"
#include "support/unix_command.h"

namespace morvane::test {
namespace {

constexpr const wchar_t* UserShellFolders =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

std::wstring KnownFolder(const KNOWNFOLDERID& id) {
    PWSTR path = nullptr;
    const HRESULT result =
        SHGetKnownFolderPath(id, static_cast<DWORD>(KF_FLAG_DONT_VERIFY), nullptr, &path);
    const ShellText owned(path);
    return SUCCEEDED(result) && path != nullptr ? std::wstring(path) : std::wstring();
}

void RequireDisposable() {
    if (!DisposableProfile()) {
        throw std::logic_error("refused: this profile is not disposable");
    }
}

// Uses the host's own commands: Wine follows links where it should delete them.
void RunOnPath(const std::string& before, const std::wstring& path, const std::string& after) {
    RequireDisposable();
    if (path.empty() || !PathExists(path)) {
        return;
    }
    const std::string line = before + " " + QuotedForShell(UnixPath(path)) + " " + after;
    const UnixResult result = RunUnix(line);
    if (result.exitCode != 0) {
        throw std::runtime_error(line + ": " + result.output);
    }
}

std::wstring Inside(const std::wstring& folder, const std::wstring& name) {
    return folder.empty() ? std::wstring() : folder + L"\\" + name;
}

// Nothing if the user has no such value.
std::optional<std::wstring> ShellFolderValue(const std::wstring& name) {
    std::wstring value(1024, L'\0');
    auto bytes = static_cast<DWORD>(value.size() * sizeof(wchar_t));
    if (RegGetValueW(HKEY_CURRENT_USER, UserShellFolders, name.c_str(),
                     RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND, nullptr, value.data(),
                     &bytes) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    value.resize(value.find(L'\0'));
    return value;
}

bool SetShellFolderValue(const std::wstring& name, const std::wstring& path) {
    const LSTATUS status =
        RegSetKeyValueW(HKEY_CURRENT_USER, UserShellFolders, name.c_str(), REG_EXPAND_SZ,
                        path.c_str(), static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t)));
    return status == ERROR_SUCCESS;
}

}  // namespace

bool DisposableProfile() {
    return EnvironmentVariable(L"MORVANE_TEST_DISPOSABLE") == L"1";
}

std::wstring RoamingFolder() {
    return KnownFolder(FOLDERID_RoamingAppData);
}

std::wstring DataFolder() {
    return Inside(RoamingFolder(), L"Morvane");
}

std::wstring SettingsPath() {
    return Inside(DataFolder(), L"config.txt");
}

std::wstring StartupFolder() {
    return KnownFolder(FOLDERID_Startup);
}

std::wstring StartupShortcut() {
    return Inside(StartupFolder(), L"Morvane.lnk");
}

bool WriteSettings(std::string_view bytes) {
    RequireDisposable();
    CreateDirectoryW(DataFolder().c_str(), nullptr);
    return WriteFileBytes(SettingsPath(), bytes);
}

std::optional<std::string> ReadSettings() {
    return ReadFileBytes(SettingsPath());
}

void RemoveDataFolder() {
    RunOnPath("rm -rf --", DataFolder(), "");
}

void EmptyStartupFolder() {
    RunOnPath("find", StartupFolder(), "-mindepth 1 -delete");
}

void ResetProfile() {
    RemoveDataFolder();
    EmptyStartupFolder();
}

bool MakeDirectoryLink(const std::wstring& path, const std::wstring& target) {
    RequireDisposable();
    return RunUnix("ln -sT -- " + QuotedForShell(UnixPath(target)) + " " +
                   QuotedForShell(UnixPath(path)))
               .exitCode == 0;
}

void RemoveLink(const std::wstring& path) {
    RunOnPath("rm -f --", path, "");
}

ShellFolderOverride::ShellFolderOverride(std::wstring name, const std::wstring& path)
    : name_(std::move(name)) {
    RequireDisposable();
    previous_ = ShellFolderValue(name_);
    if (!SetShellFolderValue(name_, path)) {
        throw std::runtime_error("the shell folder cannot be redirected");
    }
}

ShellFolderOverride::~ShellFolderOverride() {
    if (previous_) {
        SetShellFolderValue(name_, *previous_);
    } else {
        RegDeleteKeyValueW(HKEY_CURRENT_USER, UserShellFolders, name_.c_str());
    }
}

}  // namespace morvane::test
