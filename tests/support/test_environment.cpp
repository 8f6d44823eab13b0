#include "support/test_environment.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "base/owners.h"
#include "base/win_shell.h"
#include "support/child_process.h"
#include "support/test_files.h"
#include "support/wait.h"

#include <winioctl.h>

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

void EmptyFolder(const std::wstring& folder);

// What is still in use stays.
void RemoveItem(const std::wstring& path, DWORD attributes) {
    const bool isLink = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    if (!isLink) {
        SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        DeleteFileW(path.c_str());
        return;
    }
    if (!isLink) {
        EmptyFolder(path);
    }
    RemoveDirectoryW(path.c_str());
}

void EmptyFolder(const std::wstring& folder) {
    WIN32_FIND_DATAW found{};
    const FindHandle search(FindFirstFileW((folder + L"\\*").c_str(), &found));
    for (BOOL more = search ? TRUE : FALSE; more != FALSE;
         more = FindNextFileW(search.get(), &found)) {
        const std::wstring name = found.cFileName;
        if (name != L"." && name != L"..") {
            RemoveItem(std::wstring(folder).append(L"\\").append(name), found.dwFileAttributes);
        }
    }
}

void RemoveTree(const std::wstring& path) {
    RequireDisposable();
    // The program may be reading the settings.
    const bool removed = WaitUntil([&path] {
        const DWORD attributes = GetFileAttributesW(path.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES) {
            RemoveItem(AsItStands(path), attributes);
        }
        return !PathExists(path);
    });
    if (!removed) {
        throw std::runtime_error("a folder cannot be removed");
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

// Turns an empty folder into a link. The buffer is a REPARSE_DATA_BUFFER for mount points: the kind
// of link, the length of the rest, then the target's path for the system and for people.
bool MakeJunction(const std::wstring& path, const std::wstring& target) {
    const auto bytes = [](std::size_t units) {
        return static_cast<wchar_t>(units * sizeof(wchar_t));
    };
    const std::wstring forSystem = L"\\??\\" + target;
    constexpr std::size_t Lengths = 4;
    const wchar_t system = bytes(forSystem.size());
    const wchar_t people = bytes(target.size());
    const wchar_t rest = bytes(Lengths + forSystem.size() + 1 + target.size() + 1);
    std::wstring buffer = {LOWORD(IO_REPARSE_TAG_MOUNT_POINT),
                           HIWORD(IO_REPARSE_TAG_MOUNT_POINT),
                           rest,
                           0,
                           0,
                           system,
                           bytes(forSystem.size() + 1),
                           people};
    buffer.append(forSystem).append(1, L'\0').append(target).append(1, L'\0');
    const FileHandle folder(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS,
                                        nullptr));
    DWORD returned = 0;
    return DeviceIoControl(folder.get(), FSCTL_SET_REPARSE_POINT, buffer.data(),
                           bytes(buffer.size()), nullptr, 0, &returned, nullptr) != FALSE;
}

std::wstring OwnLinks() {
    return TestPath(L"Links");
}

// In "Replaced" the data folder is a link to "Target", in "Around" it holds such links.
bool MakeLinks() {
    const std::wstring root = OwnLinks();
    const std::wstring links[] = {root + L"\\Replaced\\Morvane", root + L"\\Around\\Morvane\\link",
                                  root + L"\\Around\\Morvane\\a\\b\\link"};
    for (const std::wstring& link : links) {
        SHCreateDirectoryExW(nullptr, link.c_str(), nullptr);
    }
    return std::all_of(std::begin(links), std::end(links), [&root](const std::wstring& link) {
        return MakeJunction(link, root + L"\\Target");
    });
}

// Wine 8.0 cannot make links: there the session has made them.
std::wstring FolderOfLinks() {
    RequireDisposable();
    if (MakeLinks()) {
        return OwnLinks();
    }
    RemoveTree(OwnLinks());
    return RequiredPath(L"MORVANE_TEST_LINKS");
}

}  // namespace

void RequireDisposable() {
    if (!DisposableProfile()) {
        throw std::logic_error("refused: this profile is not disposable");
    }
}

bool DisposableProfile() {
    return EnvironmentVariable(L"MORVANE_TEST_DISPOSABLE") == L"1";
}

std::wstring LocalFolder() {
    return KnownFolder(FOLDERID_LocalAppData);
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

std::wstring TestFolder() {
    return Inside(RoamingFolder(), L"MorvaneTests");
}

std::wstring TestPath(const std::wstring& name) {
    RequireDisposable();
    CreateDirectoryW(TestFolder().c_str(), nullptr);
    return Inside(TestFolder(), name);
}

void WriteSettings(std::string_view bytes) {
    RequireDisposable();
    CreateDirectoryW(DataFolder().c_str(), nullptr);
    const std::wstring draft = DataFolder() + L"\\draft.txt";
    const auto replace = [&draft] {
        return MoveFileExW(draft.c_str(), SettingsPath().c_str(), MOVEFILE_REPLACE_EXISTING) !=
               FALSE;
    };
    // The replacement fails while the program is reading the old file.
    if (!WriteFileBytes(draft, bytes) || !WaitUntil(replace)) {
        throw std::runtime_error("the settings cannot be written");
    }
}

std::optional<std::string> ReadSettings() {
    return ReadFileBytes(SettingsPath());
}

void RemoveDataFolder() {
    RemoveTree(DataFolder());
}

void EmptyStartupFolder() {
    RequireDisposable();
    EmptyFolder(AsItStands(StartupFolder()));
}

void ResetProfile() {
    RemoveDataFolder();
    EmptyStartupFolder();
    RemoveTree(TestFolder());
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

LinkedAppData::LinkedAppData(LinkPlace place)
    : root_(FolderOfLinks()),
      madeHere_(root_ == OwnLinks()),
      appData_(L"AppData", root_ + (place == LinkPlace::DataFolder ? L"\\Replaced" : L"\\Around")) {
    CreateDirectoryW(Target().c_str(), nullptr);
    EmptyFolder(Target());
}

LinkedAppData::~LinkedAppData() {
    if (madeHere_) {
        RemoveItem(root_, FILE_ATTRIBUTE_DIRECTORY);
    }
}

}  // namespace morvane::test
