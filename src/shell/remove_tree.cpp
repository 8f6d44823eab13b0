#include "shell/remove_tree.h"

#include <cstddef>
#include <ranges>
#include <string_view>
#include <vector>

#include "base/files.h"
#include "base/owners.h"
#include "base/win.h"

namespace morvane {
namespace {

struct TreeItem {
    std::wstring path;
    DWORD attributes = 0;
};

bool HasAttribute(const TreeItem& item, DWORD attribute) {
    return (item.attributes & attribute) != 0;
}

// SetFileAttributesW would follow a link and change its target; this handle does not.
void ClearReadOnly(const TreeItem& item) {
    const FileHandle handle(
        CreateFileW(item.path.c_str(), FILE_WRITE_ATTRIBUTES, FullSharing, nullptr, OPEN_EXISTING,
                    FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!handle) {
        return;
    }
    // Zero leaves a field unchanged, here the times; for the attributes hence NORMAL.
    FILE_BASIC_INFO info{};
    info.FileAttributes = FILE_ATTRIBUTE_NORMAL;
    SetFileInformationByHandle(handle.get(), FileBasicInfo, &info, sizeof(info));
}

// Deletes one file, link or empty folder and returns the error code; what is gone already counts as
// deleted. RemoveDirectoryW removes a link to a folder and leaves its target alone.
DWORD RemoveItem(const TreeItem& item) {
    if (HasAttribute(item, FILE_ATTRIBUTE_READONLY)) {
        ClearReadOnly(item);
    }
    const BOOL removed = HasAttribute(item, FILE_ATTRIBUTE_DIRECTORY)
                             ? RemoveDirectoryW(item.path.c_str())
                             : DeleteFileW(item.path.c_str());
    if (removed != FALSE) {
        return ERROR_SUCCESS;
    }
    const DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? ERROR_SUCCESS : error;
}

void AppendContent(const std::wstring& folder, std::vector<TreeItem>& items) {
    WIN32_FIND_DATAW found{};
    const std::wstring prefix = folder + L'\\';
    const FindHandle search(FindFirstFileW((prefix + L'*').c_str(), &found));
    if (!search) {
        return;
    }
    do {
        const std::wstring_view name = found.cFileName;
        if (name != L"." && name != L"..") {
            items.push_back({prefix + found.cFileName, found.dwFileAttributes});
        }
    } while (FindNextFileW(search.get(), &found) != FALSE);
}

// The item and everything below it, parents before their content. Links are not entered. A list
// instead of recursion, because a tree may be deeper than the stack allows.
std::vector<TreeItem> ListTree(const TreeItem& root) {
    std::vector<TreeItem> items{root};
    for (std::size_t at = 0; at < items.size(); ++at) {
        if (HasAttribute(items[at], FILE_ATTRIBUTE_DIRECTORY) &&
            !HasAttribute(items[at], FILE_ATTRIBUTE_REPARSE_POINT)) {
            // A copy: the list grows meanwhile.
            const std::wstring folder = items[at].path;
            AppendContent(folder, items);
        }
    }
    return items;
}

// Deletes from the leaves up and returns the first error.
DWORD RemoveItems(const std::vector<TreeItem>& items) {
    for (const TreeItem& item : std::ranges::reverse_view(items)) {
        if (const DWORD error = RemoveItem(item); error != ERROR_SUCCESS) {
            return error;
        }
    }
    return ERROR_SUCCESS;
}

// Slashes, "." and ".." and doubled separators are resolved by Windows only without the prefix;
// behind it they are taken as names.
std::wstring FullPath(const std::wstring& path) {
    // Asked for the size, the function counts the terminator; after filling the buffer it does not.
    const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    const DWORD length = GetFullPathNameW(path.c_str(), size, full.data(), nullptr);
    full.resize(length < size ? length : 0);
    return full;
}

}  // namespace

bool RemoveTree(const std::wstring& folder) {
    const DWORD attributes = GetFileAttributesW(folder.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return true;
    }
    const TreeItem root{VerbatimPath(folder), attributes};
    if (root.path.empty()) {
        return false;
    }
    DWORD error = RemoveItem(root);
    // More than once: another program may have put a file into a folder that was listed before, or
    // may close its last handle to a deleted file only now.
    constexpr int MaxAttempts = 4;
    for (int attempt = 0; attempt < MaxAttempts && error == ERROR_DIR_NOT_EMPTY; ++attempt) {
        error = RemoveItems(ListTree(root));
    }
    return error == ERROR_SUCCESS;
}

std::wstring VerbatimPath(const std::wstring& path) {
    constexpr std::wstring_view Prefix = L"\\\\?\\";
    if (path.starts_with(Prefix)) {
        return path;
    }
    const std::wstring full = FullPath(path);
    if (full.empty()) {
        return {};
    }
    std::wstring verbatim(Prefix);
    std::wstring_view rest = full;
    if (rest.starts_with(L"\\\\")) {
        // Of the two backslashes before a server's name one stays.
        verbatim.append(L"UNC");
        rest.remove_prefix(1);
    }
    return verbatim.append(rest);
}

}  // namespace morvane
