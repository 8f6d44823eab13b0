#include "kit/user_state.h"

#include <exception>
#include <optional>

#include "base/owners.h"
#include "base/win.h"
#include "kit/machine.h"
#include "settings/text.h"
#include "support/test_environment.h"
#include "support/test_files.h"

namespace morvane::kit {
namespace {

struct UserValue {
    const wchar_t* key;
    const wchar_t* name;
};

constexpr const wchar_t* ShellFolders =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

constexpr UserValue Values[] = {
    {ShellFolders, L"AppData"},
    {ShellFolders, L"Startup"},
    {L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize", L"AppsUseLightTheme"},
};

// Written last: without it nothing has been changed yet.
std::wstring OwnerFile(const std::wstring& folder) {
    return folder + L"\\owner.txt";
}

std::string Owner() {
    return WideToUtf8(ComputerName() + L"\\" + UserName());
}

std::wstring FileOf(const std::wstring& folder, const UserValue& value) {
    return folder + L"\\" + value.name + L".value";
}

// The type comes before the data. A value that is not there leaves no file.
bool SaveValue(const UserValue& value, const std::wstring& file) {
    DWORD type = 0;
    DWORD bytes = 0;
    const LSTATUS found = RegGetValueW(HKEY_CURRENT_USER, value.key, value.name,
                                       RRF_RT_ANY | RRF_NOEXPAND, nullptr, nullptr, &bytes);
    if (found == ERROR_FILE_NOT_FOUND) {
        return true;
    }
    std::string data(sizeof(type) + bytes, '\0');
    if (found != ERROR_SUCCESS ||
        RegGetValueW(HKEY_CURRENT_USER, value.key, value.name, RRF_RT_ANY | RRF_NOEXPAND, &type,
                     data.data() + sizeof(type), &bytes) != ERROR_SUCCESS) {
        return false;
    }
    data.resize(sizeof(type) + bytes);
    CopyMemory(data.data(), &type, sizeof(type));
    return test::WriteFileBytes(file, data);
}

bool RestoreValue(const UserValue& value, const std::wstring& file) {
    const std::optional<std::string> data = test::ReadFileBytes(file);
    if (!data) {
        const LSTATUS status = RegDeleteKeyValueW(HKEY_CURRENT_USER, value.key, value.name);
        return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
    }
    DWORD type = 0;
    CopyMemory(&type, data->data(), sizeof(type));
    return RegSetKeyValueW(HKEY_CURRENT_USER, value.key, value.name, type,
                           data->data() + sizeof(type),
                           static_cast<DWORD>(data->size() - sizeof(type))) == ERROR_SUCCESS;
}

// Calls with the name and attributes of each item; false as soon as a call returns false.
template <typename Function>
bool ForEachItem(const std::wstring& folder, const Function& function) {
    WIN32_FIND_DATAW found{};
    const FindHandle search(FindFirstFileW((folder + L"\\*").c_str(), &found));
    if (!search) {
        return false;
    }
    do {
        const std::wstring name = found.cFileName;
        if (name != L"." && name != L".." && !function(name, found.dwFileAttributes)) {
            return false;
        }
    } while (FindNextFileW(search.get(), &found) != FALSE);
    return true;
}

// A link would have to be made again as what it was.
bool CopyTree(const std::wstring& from, const std::wstring& to) {
    const DWORD attributes = GetFileAttributesW(from.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        return false;
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        return CopyFileW(from.c_str(), to.c_str(), FALSE) != FALSE;
    }
    CreateDirectoryW(to.c_str(), nullptr);
    return ForEachItem(from,
                       [&](const std::wstring& name, DWORD) {
                           return CopyTree(std::wstring(from).append(L"\\").append(name),
                                           std::wstring(to).append(L"\\").append(name));
                       }) &&
           SetFileAttributesW(to.c_str(), attributes) != FALSE;
}

bool CopyTreeIfThere(const std::wstring& from, const std::wstring& to) {
    return !test::PathExists(from) || CopyTree(from, to);
}

// Only of our own copies, which have no links.
void RemoveCopy(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        DeleteFileW(path.c_str());
        return;
    }
    static_cast<void>(ForEachItem(path, [&path](const std::wstring& name, DWORD) {
        RemoveCopy(std::wstring(path).append(L"\\").append(name));
        return true;
    }));
    RemoveDirectoryW(path.c_str());
}

bool SaveAll(const std::wstring& folder) {
    for (const UserValue& value : Values) {
        if (!SaveValue(value, FileOf(folder, value))) {
            return false;
        }
    }
    return CopyTreeIfThere(test::DataFolder(), folder + L"\\Morvane") &&
           CopyTreeIfThere(test::StartupFolder(), folder + L"\\Startup") &&
           test::WriteFileBytes(OwnerFile(folder), Owner());
}

// The registry first, as it tells where the folders are.
bool RestoreAll(const std::wstring& folder) {
    bool restored = true;
    for (const UserValue& value : Values) {
        restored = RestoreValue(value, FileOf(folder, value)) && restored;
    }
    if (!restored) {
        return false;
    }
    try {
        test::ResetProfile();
    } catch (const std::exception&) {
        return false;
    }
    return CopyTreeIfThere(folder + L"\\Morvane", test::DataFolder()) &&
           CopyTreeIfThere(folder + L"\\Startup", test::StartupFolder());
}

}  // namespace

Saved StateIn(const std::wstring& folder) {
    const std::optional<std::string> owner = test::ReadFileBytes(OwnerFile(folder));
    if (!owner) {
        return Saved::Nothing;
    }
    return *owner == Owner() ? Saved::Ours : Saved::SomebodyElses;
}

bool SaveUserState(const std::wstring& folder) {
    RemoveCopy(folder);
    if (CreateDirectoryW(folder.c_str(), nullptr) != FALSE && SaveAll(folder)) {
        return true;
    }
    RemoveCopy(folder);
    return false;
}

bool RestoreUserState(const std::wstring& folder) {
    if (!RestoreAll(folder)) {
        return false;
    }
    DeleteFileW(OwnerFile(folder).c_str());
    RemoveCopy(folder);
    return true;
}

}  // namespace morvane::kit
