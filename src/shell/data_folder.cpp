#include "shell/data_folder.h"

#include <array>

#include "base/win_shell.h"
#include "settings/text.h"

namespace morvane {
namespace {

constexpr std::wstring_view DataFolderName = L"Morvane";
constexpr std::wstring_view SettingsFileName = L"config.txt";

// A junction or symbolic link of any kind.
bool IsLink(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

std::wstring JoinPath(std::wstring_view folder, std::wstring_view name) {
    std::wstring path(folder);
    path += L'\\';
    return path.append(name);
}

}  // namespace

std::wstring GetDataFolder() {
    std::array<wchar_t, MAX_PATH> appData{};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT,
                                appData.data()))) {
        return {};
    }
    std::wstring folder = JoinPath(appData.data(), DataFolderName);
    // Usually ERROR_ALREADY_EXISTS.
    CreateDirectoryW(folder.c_str(), nullptr);
    // Through a link planted in the folder's place, data could be written or deleted elsewhere.
    if (IsLink(folder)) {
        return {};
    }
    // Even if it could not be created: opening a file in it then fails.
    return folder;
}

std::wstring GetSettingsPath() {
    const std::wstring folder = GetDataFolder();
    return folder.empty() ? std::wstring() : JoinPath(folder, SettingsFileName);
}

bool IsOwnDataFolder(std::wstring_view path) {
    if (path.empty() || IsLink(std::wstring(path))) {
        return false;
    }
    const std::size_t separator = path.find_last_of(L"\\/");
    const std::wstring_view last =
        separator == std::wstring_view::npos ? path : path.substr(separator + 1);
    return EqualsIgnoreCase(last, DataFolderName);
}

}  // namespace morvane
