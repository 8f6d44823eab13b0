#include "kit/sandbox.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include "base/win_shell.h"
#include "settings/text.h"
#include "support/test_files.h"

namespace morvane::kit {
namespace {

// The lowest result of ShellExecuteW that is not an error.
constexpr INT_PTR FirstSuccess = 33;

// Of the characters that a path may have, XML takes only this one amiss.
std::string EscapedPath(const std::wstring& path) {
    std::string escaped;
    for (const char character : WideToUtf8(path)) {
        escaped += character == '&' ? "&amp;" : std::string(1, character);
    }
    return escaped;
}

// "start" gives the run a window: a command at sign-in has none.
std::string Configuration(const std::wstring& folder) {
    return "<Configuration>\r\n"
           "  <Networking>Disable</Networking>\r\n"
           "  <MappedFolders>\r\n"
           "    <MappedFolder>\r\n"
           "      <HostFolder>" +
           EscapedPath(folder) +
           "</HostFolder>\r\n"
           "      <SandboxFolder>C:\\Morvane</SandboxFolder>\r\n"
           "      <ReadOnly>false</ReadOnly>\r\n"
           "    </MappedFolder>\r\n"
           "  </MappedFolders>\r\n"
           "  <LogonCommand>\r\n"
           "    <Command>cmd.exe /c start Morvane /d C:\\Morvane "
           "C:\\Morvane\\verify.cmd</Command>\r\n"
           "  </LogonCommand>\r\n"
           "</Configuration>\r\n";
}

std::wstring SandboxProgram() {
    std::array<wchar_t, MAX_PATH> folder{};
    GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    return std::wstring(folder.data()) + L"\\WindowsSandbox.exe";
}

}  // namespace

int OpenSandbox(const Kit& kit) {
    const std::wstring file = kit.folder + L"\\verify.wsb";
    if (!test::WriteFileBytes(file, Configuration(kit.folder))) {
        std::printf("verify.wsb cannot be written: unpack the kit to a folder of your own.\n");
        return EXIT_FAILURE;
    }
    if (!test::PathExists(SandboxProgram())) {
        std::printf(
            "Windows Sandbox is not switched on. Windows Home does not have it. To switch it on,\n"
            "run this in PowerShell as an administrator, restart, and open sandbox.cmd again:\n\n"
            "    Enable-WindowsOptionalFeature -Online -FeatureName "
            "Containers-DisposableClientVM -All\n\n"
            "Without it, read about \".\\verify.cmd /here\" in README.txt.\n");
        return EXIT_FAILURE;
    }
    const HINSTANCE opened =
        ShellExecuteW(nullptr, L"open", file.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    return reinterpret_cast<INT_PTR>(opened) >= FirstSuccess ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace morvane::kit
