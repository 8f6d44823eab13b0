#include "shell/remove_tree.h"

#include <string_view>
#include <vector>

#include "base/owners.h"
#include "base/win.h"

namespace morvane {

namespace {

struct TreeItem {
    std::wstring path;
    DWORD attributes = 0;
    int listings = 0;  // how often the content of the folder was put on the list
};

// A folder is listed again when it was not empty after all; not without end, in case something in
// it is listed and cannot be found.
constexpr int MaxListings = 4;

bool HasAttribute(const TreeItem& item, DWORD attribute) {
    return (item.attributes & attribute) != 0;
}

bool IsLink(const TreeItem& item) {
    return HasAttribute(item, FILE_ATTRIBUTE_REPARSE_POINT);
}

// Done on a handle that does not follow links: by its path, a link's target would be changed.
void ClearReadOnly(const TreeItem& item) {
    const FileHandle handle(
        CreateFileW(item.path.c_str(), FILE_WRITE_ATTRIBUTES,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                    FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!handle) {
        return;
    }
    // Zero means "leave as it is" for the times, and would for the attributes: hence NORMAL.
    FILE_BASIC_INFO info{};
    info.FileAttributes = FILE_ATTRIBUTE_NORMAL;
    SetFileInformationByHandle(handle.get(), FileBasicInfo, &info, sizeof(info));
}

// Deletes one file, one link or one empty folder and returns the error code of it; what is gone
// already counts as deleted. A link to a folder is removed like a folder: that takes the link away
// and leaves its target alone.
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

// Adds what the folder holds to the list, read to the end before any of it is deleted. False when
// nothing was found.
bool AppendContent(const std::wstring& folder, std::vector<TreeItem>& items) {
    WIN32_FIND_DATAW found{};
    const FindHandle search(FindFirstFileW((folder + L"\\*").c_str(), &found));
    if (!search) {
        return false;
    }
    const std::size_t before = items.size();
    do {
        const std::wstring_view name = found.cFileName;
        if (name != L"." && name != L"..") {
            items.push_back({folder + L"\\" + found.cFileName, found.dwFileAttributes});
        }
    } while (FindNextFileW(search.get(), &found) != FALSE);
    return items.size() > before;
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
    const std::wstring root = VerbatimPath(folder);
    if (root.empty()) {
        return false;
    }
    // A list instead of recursion: the depth of the folders is not ours to choose. A folder that
    // is not empty stays on the list below its content and comes up again when that is deleted.
    std::vector<TreeItem> pending{{root, attributes}};
    while (!pending.empty()) {
        const int listings = pending.back().listings++;
        const TreeItem item = pending.back();
        const DWORD error = RemoveItem(item);
        if (error == ERROR_SUCCESS) {
            pending.pop_back();
            continue;
        }
        const bool mayHaveContent =
            error == ERROR_DIR_NOT_EMPTY && !IsLink(item) && listings < MaxListings;
        // Without content it is asked once more: a file that somebody held while it was deleted
        // goes with its last handle, perhaps only now.
        if (!mayHaveContent ||
            (!AppendContent(item.path, pending) && RemoveItem(item) != ERROR_SUCCESS)) {
            return false;
        }
    }
    return true;
}

std::wstring VerbatimPath(const std::wstring& path) {
    constexpr std::wstring_view Prefix = L"\\\\?\\";
    constexpr std::wstring_view ServerPrefix = L"\\\\";
    if (path.starts_with(Prefix)) {
        return path;
    }
    const std::wstring full = FullPath(path);
    if (full.starts_with(ServerPrefix)) {
        return L"\\\\?\\UNC\\" + full.substr(ServerPrefix.size());
    }
    return full.empty() ? full : std::wstring(Prefix) + full;
}

}  // namespace morvane
