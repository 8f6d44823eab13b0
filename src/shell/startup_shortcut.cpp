#include "shell/startup_shortcut.h"

#include "base/files.h"
#include "base/owners.h"
#include "base/process.h"
#include "base/win_shell.h"
#include "i18n/strings.h"

namespace morvane {
namespace {

// Sets target and description only: without arguments the program starts normally.
bool SaveShortcut(const std::wstring& linkPath, const std::wstring& target) {
    ComPointer<IShellLinkW> link;
    if (FAILED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                reinterpret_cast<void**>(link.put()))) ||
        FAILED(link->SetPath(target.c_str())) ||
        FAILED(link->SetDescription(GetText(StrAppDescription)))) {
        return false;
    }
    // Declared after the link, so that it is released first.
    ComPointer<IPersistFile> file;
    return SUCCEEDED(
               link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(file.put()))) &&
           SUCCEEDED(file->Save(linkPath.c_str(), TRUE));
}

}  // namespace

std::wstring GetStartupFolder() {
    // The text is the caller's to free even if the call fails.
    ShellText text;
    const HRESULT result = SHGetKnownFolderPath(FOLDERID_Startup, 0, nullptr, text.put());
    return SUCCEEDED(result) && text ? std::wstring(text.get()) : std::wstring();
}

std::wstring GetStartupShortcutPath() {
    const std::wstring folder = GetStartupFolder();
    return folder.empty() ? std::wstring() : folder + L"\\Morvane.lnk";
}

bool IsStartupEnabled() {
    const std::wstring path = GetStartupShortcutPath();
    return !path.empty() && PathExists(path);
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
