#include "support/shortcut.h"

#include <array>

#include "base/owners.h"
#include "base/win_shell.h"

namespace morvane::test {
namespace {

std::optional<Shortcut> ContentOf(IShellLinkW& link) {
    Shortcut shortcut;
    std::array<wchar_t, 1024> text{};
    const auto size = static_cast<int>(text.size());
    const auto keep = [&text](std::wstring& field, HRESULT read) {
        field = text.data();
        return SUCCEEDED(read);
    };
    const bool complete =
        keep(shortcut.target, link.GetPath(text.data(), size, nullptr, SLGP_RAWPATH)) &&
        keep(shortcut.description, link.GetDescription(text.data(), size)) &&
        keep(shortcut.arguments, link.GetArguments(text.data(), size)) &&
        keep(shortcut.workingFolder, link.GetWorkingDirectory(text.data(), size)) &&
        keep(shortcut.iconPath, link.GetIconLocation(text.data(), size, &shortcut.iconIndex)) &&
        SUCCEEDED(link.GetShowCmd(&shortcut.showCommand)) &&
        SUCCEEDED(link.GetHotkey(&shortcut.hotKey));
    return complete ? std::optional(shortcut) : std::nullopt;
}

}  // namespace

std::optional<Shortcut> ReadShortcut(const std::wstring& path) {
    const ComApartment apartment;
    ComPointer<IShellLinkW> link;
    ComPointer<IPersistFile> file;
    const bool loaded =
        apartment &&
        SUCCEEDED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                   reinterpret_cast<void**>(link.put()))) &&
        SUCCEEDED(link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(file.put()))) &&
        SUCCEEDED(file->Load(path.c_str(), STGM_READ));
    return loaded ? ContentOf(*link.get()) : std::nullopt;
}

}  // namespace morvane::test
