#include "support/shortcut.h"

#include <array>

#include "base/owners.h"
#include "base/win_shell.h"

namespace morvane::test {
namespace {

// The text that a getter writes into a buffer of the given size; nothing if it fails.
template <typename Read>
std::optional<std::wstring> TextFrom(Read read) {
    std::array<wchar_t, 1024> buffer{};
    if (FAILED(read(buffer.data(), static_cast<int>(buffer.size())))) {
        return std::nullopt;
    }
    return buffer.data();
}

std::optional<Shortcut> ContentOf(IShellLinkW& link) {
    Shortcut shortcut;
    const auto target = TextFrom(
        [&](wchar_t* text, int size) { return link.GetPath(text, size, nullptr, SLGP_RAWPATH); });
    const auto description =
        TextFrom([&](wchar_t* text, int size) { return link.GetDescription(text, size); });
    const auto arguments =
        TextFrom([&](wchar_t* text, int size) { return link.GetArguments(text, size); });
    const auto folder =
        TextFrom([&](wchar_t* text, int size) { return link.GetWorkingDirectory(text, size); });
    const auto icon = TextFrom([&](wchar_t* text, int size) {
        return link.GetIconLocation(text, size, &shortcut.iconIndex);
    });
    if (!target || !description || !arguments || !folder || !icon ||
        FAILED(link.GetShowCmd(&shortcut.showCommand)) ||
        FAILED(link.GetHotkey(&shortcut.hotKey))) {
        return std::nullopt;
    }
    shortcut.target = *target;
    shortcut.description = *description;
    shortcut.arguments = *arguments;
    shortcut.workingFolder = *folder;
    shortcut.iconPath = *icon;
    return shortcut;
}

}  // namespace

std::optional<Shortcut> ReadShortcut(const std::wstring& path) {
    const ComApartment apartment;
    IShellLinkW* newLink = nullptr;
    if (!apartment ||
        FAILED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW,
                                reinterpret_cast<void**>(&newLink)))) {
        return std::nullopt;
    }
    const ComPointer<IShellLinkW> link(newLink);
    IPersistFile* newFile = nullptr;
    if (FAILED(newLink->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&newFile)))) {
        return std::nullopt;
    }
    const ComPointer<IPersistFile> file(newFile);
    if (FAILED(newFile->Load(path.c_str(), STGM_READ))) {
        return std::nullopt;
    }
    return ContentOf(*newLink);
}

}  // namespace morvane::test
