#include "kit/machine.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>

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
constexpr int Percent = 100;
constexpr std::size_t LongestValue = 256;
constexpr std::size_t LongestTime = 40;
constexpr std::size_t Sha256Bytes = 32;

struct KeyTraits : NullableTraits<HKEY> {
    static void Close(Handle handle) noexcept { RegCloseKey(handle); }
};
using Key = Owner<KeyTraits>;

struct ScreenTraits : NullableTraits<HDC> {
    static void Close(Handle handle) noexcept { ReleaseDC(nullptr, handle); }
};
using Screen = Owner<ScreenTraits>;

struct AlgorithmTraits : NullableTraits<BCRYPT_ALG_HANDLE> {
    static void Close(Handle handle) noexcept { BCryptCloseAlgorithmProvider(handle, 0); }
};
using Algorithm = Owner<AlgorithmTraits>;

std::string SystemValue(const wchar_t* name) {
    std::wstring value(LongestValue, L'\0');
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

std::string System() {
    Key wine;
    RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\Wine", 0, KEY_READ, wine.put());
    const std::string name = SystemValue(L"ProductName");
    const std::string build = SystemValue(L"CurrentBuildNumber");
    // Which still calls itself 10; servers have such builds, too.
    const bool isEleven = std::atoi(build.c_str()) >= FirstBuildOfWindows11 &&
                          name.find("Windows 10") != std::string::npos;
    return (wine ? "Wine as " : "") + name + (isEleven ? " (Windows 11), " : ", ") +
           SystemValue(L"DisplayVersion") + " build " + build + "." +
           std::to_string(Number(HKEY_LOCAL_MACHINE, SystemKey, L"UBR", 0));
}

// Right only in a process that is aware of the scaling.
std::string Scaling() {
    const Screen screen(GetDC(nullptr));
    const int dpi = GetDeviceCaps(screen.get(), LOGPIXELSX);
    const std::string size = std::to_string(GetDeviceCaps(screen.get(), HORZRES)) + " x " +
                             std::to_string(GetDeviceCaps(screen.get(), VERTRES));
    return std::to_string(dpi * Percent / UnscaledDpi) + " %, main screen " + size + ", screens " +
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
    std::optional<std::string> bytes = test::ReadFileBytes(file);
    std::array<unsigned char, Sha256Bytes> digest{};
    Algorithm algorithm;
    BCryptOpenAlgorithmProvider(algorithm.put(), BCRYPT_SHA256_ALGORITHM, nullptr, 0);
    if (!bytes || !algorithm ||
        BCryptHash(algorithm.get(), nullptr, 0, reinterpret_cast<PUCHAR>(bytes->data()),
                   static_cast<ULONG>(bytes->size()), digest.data(), digest.size()) < 0) {
        return "unknown";
    }
    std::string text;
    for (const unsigned char byte : digest) {
        char digits[sizeof("ff")]{};
        std::snprintf(digits, sizeof(digits), "%02x", byte);
        text += digits;
    }
    return text;
}

std::string Now() {
    SYSTEMTIME time{};
    GetSystemTime(&time);
    char text[LongestTime]{};
    std::snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d UTC", time.wYear, time.wMonth,
                  time.wDay, time.wHour, time.wMinute);
    return text;
}

}  // namespace

std::wstring ProgramFile() {
    constexpr std::size_t Longest = 32'768;
    std::wstring path(Longest, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

bool IsDisposable() {
    std::array<wchar_t, UNLEN + 1> name{};
    DWORD size = name.size();
    return GetUserNameW(name.data(), &size) != FALSE &&
           std::wstring_view(name.data()) == L"WDAGUtilityAccount";
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
