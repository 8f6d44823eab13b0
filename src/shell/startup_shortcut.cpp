#include "shell/startup_shortcut.h"

#include <array>

#include "base/owners.h"
#include "base/win_shell.h"
#include "i18n/strings.h"

namespace morvane {

namespace {

// The full path of the running program; empty when it cannot be read whole.
std::wstring ProgramPath() {
    std::array<wchar_t, MAX_PATH> path{};
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), MAX_PATH);
    // A path that fills the buffer has been cut: a shortcut to it would lead nowhere.
    return length < MAX_PATH ? std::wstring(path.data(), length) : std::wstring();
}

// Target and description are all that it gets: without arguments the program starts normally.
bool SaveShortcut(const std::wstring& linkPath, const std::wstring& target) {
    ComPointer<IShellLinkW> link;
    IShellLinkW* newLink = nullptr;
    if (FAILED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                reinterpret_cast<void**>(&newLink)))) {
        return false;
    }
    link.reset(newLink);
    if (FAILED(link.get()->SetPath(target.c_str())) ||
        FAILED(link.get()->SetDescription(GetText(StrAppDescription)))) {
        return false;
    }
    // Declared after the link, so that it is released first.
    ComPointer<IPersistFile> file;
    IPersistFile* newFile = nullptr;
    if (FAILED(link.get()->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&newFile)))) {
        return false;
    }
    file.reset(newFile);
    return SUCCEEDED(file.get()->Save(linkPath.c_str(), TRUE));
}

}  // namespace

std::wstring GetStartupFolder() {
    PWSTR text = nullptr;
    const HRESULT result = SHGetKnownFolderPath(FOLDERID_Startup, 0, nullptr, &text);
    // The text is the caller's to free, also when the call has failed.
    const ShellText owned(text);
    return SUCCEEDED(result) && text != nullptr ? std::wstring(text) : std::wstring();
}

std::wstring GetStartupShortcutPath() {
    const std::wstring folder = GetStartupFolder();
    return folder.empty() ? std::wstring() : folder + L"\\Morvane.lnk";
}

bool IsStartupEnabled() {
    const std::wstring path = GetStartupShortcutPath();
    return !path.empty() && GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool InstallStartupShortcut() {
    const std::wstring linkPath = GetStartupShortcutPath();
    if (linkPath.empty()) {
        return false;
    }
    const std::wstring target = ProgramPath();
    return !target.empty() && SaveShortcut(linkPath, target);
}

void RemoveStartupShortcut() {
    const std::wstring path = GetStartupShortcutPath();
    if (!path.empty()) {
        DeleteFileW(path.c_str());
    }
}

}  // namespace morvane
