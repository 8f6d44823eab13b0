#include "kit/machine.h"

#include <array>
#include <cstdint>
#include <cstdio>

#include "base/owners.h"
#include "settings/text.h"
#include "support/test_files.h"

// Needs the declarations above.
#include <bcrypt.h>
#include <lmcons.h>

namespace morvane::kit {
namespace {

constexpr const wchar_t* SystemKey = L"Software\\Microsoft\\Windows NT\\CurrentVersion";
constexpr const wchar_t* ThemeKey =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize";
constexpr int FirstBuildOfWindows11 = 22'000;
constexpr int UnscaledDpi = 96;

std::string SystemValue(const wchar_t* name) {
    std::wstring value(256, L'\0');
    auto bytes = static_cast<DWORD>(value.size() * sizeof(wchar_t));
    if (RegGetValueW(HKEY_LOCAL_MACHINE, SystemKey, name, RRF_RT_REG_SZ, nullptr, value.data(),
                     &bytes) != ERROR_SUCCESS) {
        return {};
    }
    value.resize(value.find(L'\0'));
    return WideToUtf8(value);
}

DWORD Number(HKEY root, const wchar_t* key, const wchar_t* name, DWORD otherwise) {
    DWORD value = 0;
    DWORD bytes = sizeof(value);
    return RegGetValueW(root, key, name, RRF_RT_REG_DWORD, nullptr, &value, &bytes) == ERROR_SUCCESS
               ? value
               : otherwise;
}

// The product's name was not changed for Windows 11.
std::string System() {
    HKEY wine = nullptr;
    const bool isWine =
        RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\Wine", 0, KEY_READ, &wine) == ERROR_SUCCESS;
    if (isWine) {
        RegCloseKey(wine);
    }
    const std::string build = SystemValue(L"CurrentBuildNumber");
    const bool isEleven = std::atoi(build.c_str()) >= FirstBuildOfWindows11;
    return (isWine ? "Wine as " : "") + SystemValue(L"ProductName") +
           (isEleven ? " (Windows 11), " : ", ") + SystemValue(L"DisplayVersion") + " build " +
           build + "." + std::to_string(Number(HKEY_LOCAL_MACHINE, SystemKey, L"UBR", 0));
}

// Right only in a process that is aware of it.
std::string Scaling() {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    const std::string size = std::to_string(GetDeviceCaps(screen, HORZRES)) + " x " +
                             std::to_string(GetDeviceCaps(screen, VERTRES));
    ReleaseDC(nullptr, screen);
    return std::to_string(dpi * 100 / UnscaledDpi) + " %, main screen " + size + ", screens " +
           std::to_string(GetSystemMetrics(SM_CMONITORS));
}

std::string DisplayLanguage() {
    std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name{};
    LCIDToLocaleName(GetUserDefaultUILanguage(), name.data(), static_cast<int>(name.size()), 0);
    return WideToUtf8(name.data());
}

std::string Theme() {
    HIGHCONTRASTW contrast{};
    contrast.cbSize = sizeof(contrast);
    SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof(contrast), &contrast, 0);
    const auto shade = [](const wchar_t* name) {
        return Number(HKEY_CURRENT_USER, ThemeKey, name, 1) != 0 ? "light" : "dark";
    };
    return std::string("applications ") + shade(L"AppsUseLightTheme") + ", taskbar " +
           shade(L"SystemUsesLightTheme") +
           ((contrast.dwFlags & HCF_HIGHCONTRASTON) != 0 ? ", high contrast" : "");
}

std::string VersionOf(const std::wstring& file) {
    std::string data(GetFileVersionInfoSizeW(file.c_str(), nullptr), '\0');
    void* found = nullptr;
    UINT size = 0;
    if (data.empty() ||
        GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(data.size()), data.data()) ==
            FALSE ||
        VerQueryValueW(data.data(), L"\\", &found, &size) == FALSE) {
        return "unknown";
    }
    const auto& version = *static_cast<const VS_FIXEDFILEINFO*>(found);
    return std::to_string(HIWORD(version.dwFileVersionMS)) + "." +
           std::to_string(LOWORD(version.dwFileVersionMS)) + "." +
           std::to_string(HIWORD(version.dwFileVersionLS)) + "." +
           std::to_string(LOWORD(version.dwFileVersionLS));
}

std::string Sha256Of(const std::wstring& file) {
    std::string bytes = test::ReadFileBytes(file).value_or("");
    std::array<unsigned char, 32> digest{};
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    if (BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0) < 0) {
        return "unknown";
    }
    const NTSTATUS status =
        BCryptHash(algorithm, nullptr, 0, reinterpret_cast<PUCHAR>(bytes.data()),
                   static_cast<ULONG>(bytes.size()), digest.data(), digest.size());
    BCryptCloseAlgorithmProvider(algorithm, 0);
    std::string text;
    for (const unsigned char byte : digest) {
        constexpr std::string_view Digits = "0123456789abcdef";
        text.append(1, Digits[byte / 16]).append(1, Digits[byte % 16]);
    }
    return status < 0 ? "unknown" : text;
}

std::string Now() {
    SYSTEMTIME time{};
    GetSystemTime(&time);
    char text[40]{};
    std::snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d UTC", time.wYear, time.wMonth,
                  time.wDay, time.wHour, time.wMinute);
    return text;
}

}  // namespace

std::wstring UserName() {
    std::array<wchar_t, UNLEN + 1> name{};
    DWORD size = name.size();
    return GetUserNameW(name.data(), &size) != FALSE ? name.data() : L"";
}

std::wstring ComputerName() {
    std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> name{};
    DWORD size = name.size();
    return GetComputerNameW(name.data(), &size) != FALSE ? name.data() : L"";
}

bool IsDisposable() {
    return UserName() == L"WDAGUtilityAccount";
}

std::vector<Fact> Facts(const Kit& kit) {
    return {
        {"Date", Now()},
        {"System", System()},
        {"Place", IsDisposable() ? "Windows Sandbox" : "not a disposable machine"},
        {"Scaling", Scaling()},
        {"Display language", DisplayLanguage()},
        {"Theme", Theme()},
        {"Morvane.exe", "version " + VersionOf(kit.Program())},
        {"SHA-256", Sha256Of(kit.Program())},
    };
}

}  // namespace morvane::kit
