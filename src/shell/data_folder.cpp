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
    // Fails as a rule, because the folder exists.
    CreateDirectoryW(folder.c_str(), nullptr);
    // Deliberate, and to stay: data is neither kept nor deleted through a link that somebody has
    // put in the folder's place.
    if (IsLink(folder)) {
        return {};
    }
    // Returned also when it could not be created: what is done with it then fails by itself.
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
