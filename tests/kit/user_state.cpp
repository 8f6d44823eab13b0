#include "kit/user_state.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/owners.h"
#include "base/win.h"
#include "kit/machine.h"
#include "shell/remove_tree.h"
#include "support/test_environment.h"
#include "support/test_files.h"

namespace morvane::kit {
namespace {

constexpr const wchar_t* UserShellFolders =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
// Where Windows copies them to.
constexpr const wchar_t* ShellFolders =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

struct UserValue {
    const wchar_t* file;
    const wchar_t* key;
    const wchar_t* name;
};

constexpr UserValue Values[] = {
    {L"user AppData.value", UserShellFolders, L"AppData"},
    {L"user Startup.value", UserShellFolders, L"Startup"},
    {L"AppData.value", ShellFolders, L"AppData"},
    {L"Startup.value", ShellFolders, L"Startup"},
    {L"theme.value", L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
     L"AppsUseLightTheme"},
};

// In place of a value's type.
constexpr DWORD NoValue = ~DWORD{0};

constexpr const wchar_t* RunOnceKey = L"Software\\Microsoft\\Windows\\CurrentVersion\\RunOnce";
// By the sign, Windows keeps the value until the program has ended.
constexpr const wchar_t* RunOnceValue = L"!MorvaneVerify";

std::wstring SavedPath(const std::wstring& name) {
    return SavedStateFolder() + L"\\" + name;
}

// Written last: without it nothing has been changed yet.
std::wstring CompleteFile() {
    return SavedPath(L"complete");
}

struct Tree {
    std::wstring place;
    std::wstring copy;
};

std::vector<Tree> Trees() {
    return {{test::DataFolder(), SavedPath(L"Morvane")},
            {test::StartupFolder(), SavedPath(L"Startup")}};
}

// So that it outlasts a loss of power.
bool Flush(const std::wstring& file) {
    const FileHandle handle = test::HoldFile(file, GENERIC_WRITE, FILE_SHARE_READ);
    return handle && FlushFileBuffers(handle.get()) != FALSE;
}

bool WriteFlushed(const std::wstring& file, std::string_view bytes) {
    return test::WriteFileBytes(file, bytes) && Flush(file);
}

// The type comes before the data.
bool SaveValue(const UserValue& value) {
    DWORD type = NoValue;
    DWORD bytes = 0;
    const LSTATUS found = RegGetValueW(HKEY_CURRENT_USER, value.key, value.name,
                                       RRF_RT_ANY | RRF_NOEXPAND, nullptr, nullptr, &bytes);
    std::string data(sizeof(type) + bytes, '\0');
    if (found == ERROR_SUCCESS) {
        if (RegGetValueW(HKEY_CURRENT_USER, value.key, value.name, RRF_RT_ANY | RRF_NOEXPAND, &type,
                         data.data() + sizeof(type), &bytes) != ERROR_SUCCESS) {
            return false;
        }
        data.resize(sizeof(type) + bytes);
    } else if (found != ERROR_FILE_NOT_FOUND) {
        return false;
    }
    CopyMemory(data.data(), &type, sizeof(type));
    return WriteFlushed(SavedPath(value.file), data);
}

bool RestoreValue(const UserValue& value) {
    const std::optional<std::string> data = test::ReadFileBytes(SavedPath(value.file));
    DWORD type = 0;
    if (!data || data->size() < sizeof(type)) {
        return false;
    }
    CopyMemory(&type, data->data(), sizeof(type));
    if (type == NoValue) {
        const LSTATUS status = RegDeleteKeyValueW(HKEY_CURRENT_USER, value.key, value.name);
        return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
    }
    return RegSetKeyValueW(HKEY_CURRENT_USER, value.key, value.name, type,
                           data->data() + sizeof(type),
                           static_cast<DWORD>(data->size() - sizeof(type))) == ERROR_SUCCESS;
}

bool CopyFlushed(const std::wstring& from, const std::wstring& to, DWORD attributes) {
    return CopyFileW(from.c_str(), to.c_str(), FALSE) != FALSE &&
           SetFileAttributesW(to.c_str(), FILE_ATTRIBUTE_NORMAL) != FALSE && Flush(to) &&
           SetFileAttributesW(to.c_str(), attributes) != FALSE;
}

// A link would have to be made again as what it was.
bool CopyTree(const std::wstring& from, const std::wstring& to) {
    const DWORD attributes = GetFileAttributesW(from.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        return false;
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        return CopyFlushed(from, to, attributes);
    }
    CreateDirectoryW(to.c_str(), nullptr);
    WIN32_FIND_DATAW found{};
    const FindHandle search(FindFirstFileW((from + L"\\*").c_str(), &found));
    bool copied = static_cast<bool>(search);
    while (copied) {
        const std::wstring_view name = found.cFileName;
        const std::wstring place = std::wstring(L"\\").append(name);
        copied = name == L"." || name == L".." || CopyTree(from + place, to + place);
        if (copied && FindNextFileW(search.get(), &found) == FALSE) {
            copied = GetLastError() == ERROR_NO_MORE_FILES;
            break;
        }
    }
    return copied && SetFileAttributesW(to.c_str(), attributes) != FALSE;
}

bool IsFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// A file in place of the copy tells that there was no folder; a copy that got lost must not look
// like that.
bool SaveTree(const Tree& tree) {
    if (IsFolder(tree.place)) {
        return CopyTree(tree.place, tree.copy);
    }
    const DWORD error = GetLastError();
    return (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) &&
           !test::PathExists(tree.place) && WriteFlushed(tree.copy, {});
}

bool RestoreAtSignIn() {
    const std::wstring command = L"\"" + ProgramFile() + L"\"";
    const auto bytes = static_cast<DWORD>((command.size() + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(HKEY_CURRENT_USER, RunOnceKey, RunOnceValue, REG_SZ, command.c_str(),
                           bytes) == ERROR_SUCCESS &&
           RegFlushKey(HKEY_CURRENT_USER) == ERROR_SUCCESS;
}

bool ForgetState() {
    RegDeleteKeyValueW(HKEY_CURRENT_USER, RunOnceKey, RunOnceValue);
    return RemoveTree(SavedStateFolder());
}

bool SaveAll() {
    const std::vector<Tree> trees = Trees();
    return ForgetState() && CreateDirectoryW(SavedStateFolder().c_str(), nullptr) != FALSE &&
           std::all_of(std::begin(Values), std::end(Values), SaveValue) &&
           std::all_of(trees.begin(), trees.end(), SaveTree) && RestoreAtSignIn() &&
           WriteFlushed(CompleteFile(), {});
}

bool IsComplete() {
    const std::vector<Tree> trees = Trees();
    return IsStateSaved() && std::all_of(trees.begin(), trees.end(), [](const Tree& tree) {
               return test::PathExists(tree.copy);
           });
}

// The registry first, as it tells where the folders are.
bool RestoreAll() {
    if (!IsComplete() || !std::all_of(std::begin(Values), std::end(Values), RestoreValue)) {
        return false;
    }
    try {
        test::ResetProfile();
    } catch (const std::exception&) {
        return false;
    }
    const std::vector<Tree> trees = Trees();
    return std::all_of(trees.begin(), trees.end(), [](const Tree& tree) {
        return !IsFolder(tree.copy) || CopyTree(tree.copy, tree.place);
    });
}

}  // namespace

std::wstring SavedStateFolder() {
    return test::LocalFolder() + L"\\Morvane-verify";
}

bool IsStateSaved() {
    return test::PathExists(CompleteFile());
}

bool SaveUserState() {
    if (SaveAll()) {
        return true;
    }
    static_cast<void>(ForgetState());
    return false;
}

bool RestoreUserState() {
    return RestoreAll() && DeleteFileW(CompleteFile().c_str()) != FALSE && ForgetState();
}

}  // namespace morvane::kit
