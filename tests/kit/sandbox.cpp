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

// The only character of paths that means something else in XML.
std::string EscapedPath(const std::wstring& path) {
    std::string escaped;
    for (const char character : WideToUtf8(path)) {
        escaped += character == '&' ? "&amp;" : std::string(1, character);
    }
    return escaped;
}

// "start" opens a window for the run: Windows Sandbox starts its command without one.
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
           "    <Command>cmd.exe /c start C:\\Morvane\\verify.cmd</Command>\r\n"
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
    const HINSTANCE opened = ShellExecuteW(nullptr, L"open", SandboxProgram().c_str(),
                                           (L"\"" + file + L"\"").c_str(), nullptr, SW_SHOWNORMAL);
    const bool isOpen = reinterpret_cast<INT_PTR>(opened) >= FirstSuccess;
    std::printf(isOpen ? "Windows Sandbox opens. The report appears in this folder.\n"
                       : "Windows Sandbox does not start; perhaps one is open already.\n");
    return isOpen ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace morvane::kit
