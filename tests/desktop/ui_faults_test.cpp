// Menu, dialog and texts when the platform refuses part of them: the rest still works.

#include <array>
#include <bit>
#include <gtest/gtest.h>
#include <string_view>

#include "desktop/about_fixture.h"
#include "desktop/canvas.h"
#include "desktop/menu_fixture.h"
#include "settings/settings_text.h"
#include "settings/text.h"
#include "support/import_patch.h"
#include "support/import_watch.h"
#include "support/window_owner.h"
#include "support/window_state.h"
#include "ui/dialog_frame.h"
#include "ui/menu_build.h"
#include "ui/product_version.h"

namespace morvane::test {
namespace {

TEST(TextFaultsTest, RefusedConversionsGiveNoText) {
    {
        const auto patch = Refuse<decltype(&MultiByteToWideChar), 0>("MultiByteToWideChar");
        EXPECT_EQ(Utf8ToWide("text"), L"");
        EXPECT_TRUE(ParseSettingsText("@pinning=0\nnotes\n").pinning);
        EXPECT_TRUE(ParseSettingsText("@pinning=0\nnotes\n").entries.empty());
    }
    const auto patch = Refuse<decltype(&WideCharToMultiByte), 0>("WideCharToMultiByte");
    EXPECT_EQ(WideToUtf8(L"text"), "");
}

TEST(TextFaultsTest, CharacterOfUnknownTypeIsNotWhiteSpace) {
    constexpr wchar_t IdeographicSpace = 0x3000;
    ASSERT_TRUE(IsWhiteSpace(IdeographicSpace));
    const auto patch = Refuse<decltype(&GetStringTypeW), FALSE>("GetStringTypeW");
    EXPECT_FALSE(IsWhiteSpace(IdeographicSpace));
}

using MenuFaultsTest = MenuTest;

TEST_F(MenuFaultsTest, SubmenuThatCannotBeAppendedIsDestroyed) {
    static_cast<void>(Window(L"Alpha"));
    int destroyed = 0;
    const ImportWatch<decltype(&DestroyMenu)> watch("DestroyMenu",
                                                    [&destroyed](HMENU /*menu*/) { ++destroyed; });
    {
        const auto patch = Refuse<decltype(&AppendMenuW), FALSE>("AppendMenuW");
        const Menu menu = BuildTrayMenu();
        ASSERT_TRUE(menu);
        EXPECT_EQ(GetMenuItemCount(menu.get()), 0);
        EXPECT_EQ(destroyed, 2);
    }
    EXPECT_EQ(destroyed, 3);
}

using AboutFaultsTest = AboutDialogTest;

TEST_F(AboutFaultsTest, WithoutAFontTheDialogIsNotLaidOut) {
    const auto patch = Refuse<decltype(&CreateFontW), nullptr>("CreateFontW");
    OpenAndLook([](HWND dialog) {
        EXPECT_EQ(WindowSize(dialog).cx, 420);
        EXPECT_EQ(WindowSize(dialog).cy, 180);
        EXPECT_NE(BodyOf(dialog), nullptr);
    });
}

TEST_F(AboutFaultsTest, WithoutABrushTheSystemPaintsTheDialog) {
    const auto patch = Refuse<decltype(&CreateSolidBrush), nullptr>("CreateSolidBrush");
    OpenAndLook([](HWND dialog) {
        const Canvas canvas(10, 10);
        const auto dc = reinterpret_cast<WPARAM>(canvas.Context());
        EXPECT_EQ(SendMessageW(dialog, WM_CTLCOLORSTATIC, dc, 0),
                  reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE)));
        EXPECT_EQ(SendMessageW(dialog, WM_ERASEBKGND, dc, 0), 0) << "the class has no brush";
    });
}

TEST_F(AboutFaultsTest, DialogOpensWithoutTheOptionalLibraryFunctions) {
    const auto patch = Refuse<decltype(&GetProcAddress), nullptr>("GetProcAddress");
    for (const DWORD light : {0U, 1U}) {
        AppThemeSetting::Set(light);
        OpenAndLook([](HWND dialog) { EXPECT_NE(ButtonOf(dialog), nullptr); });
    }
}

// As in the messages that arrive before the record is set.
TEST_F(AboutFaultsTest, WithoutItsRecordTheDialogLeavesItsColoursToTheSystem) {
    AppThemeSetting::Set(0);
    OpenAndLook([](HWND dialog) {
        const Canvas canvas(10, 10);
        const auto dc = reinterpret_cast<WPARAM>(canvas.Context());
        const LONG_PTR record = SetWindowLongPtrW(dialog, GWLP_USERDATA, 0);
        const LRESULT without = SendMessageW(dialog, WM_CTLCOLORSTATIC, dc, 0);
        EXPECT_EQ(SendMessageW(dialog, WM_ERASEBKGND, dc, 0), 0);
        SetWindowLongPtrW(dialog, GWLP_USERDATA, record);
        EXPECT_NE(without, SendMessageW(dialog, WM_CTLCOLORSTATIC, dc, 0));
    });
}

TEST(DialogFrameFaultsTest, WindowWithUnknownPositionIsNotMoved) {
    const WindowOwner window(CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 10, 20, 30, 40, nullptr,
                                             nullptr, GetModuleHandleW(nullptr), nullptr));
    PositionNearTray(nullptr, 16);
    {
        const auto patch = Refuse<decltype(&GetWindowRect), FALSE>("GetWindowRect");
        PositionNearTray(window.get(), 16);
    }
    {
        const auto patch = Refuse<decltype(&SystemParametersInfoW), FALSE>("SystemParametersInfoW");
        PositionNearTray(window.get(), 16);
    }
    EXPECT_EQ(WindowRect(window.get()).left, 10);
    EXPECT_EQ(WindowRect(window.get()).top, 20);
    PositionNearTray(window.get(), 16);
    EXPECT_NE(WindowRect(window.get()).left, 10);
}

constexpr std::string_view NoFunction;

// A fake version library, and how far reading gets with it.
struct VersionScene {
    DWORD size = 1;
    BOOL isRead = TRUE;
    UINT translationSize = 4;
    bool hasTranslation = true;
    bool hasVersion = true;
    UINT versionSize = 4;
    std::string_view missing = NoFunction;
};

VersionScene versionScene;

DWORD WINAPI SizeOfVersion(LPCWSTR /*path*/, LPDWORD /*unused*/) {
    return versionScene.size;
}

BOOL WINAPI ReadVersion(LPCWSTR /*path*/, DWORD /*unused*/, DWORD /*size*/, LPVOID /*data*/) {
    return versionScene.isRead;
}

BOOL WINAPI QueryVersion(LPCVOID /*data*/, LPCWSTR name, LPVOID* found, PUINT size) {
    static const std::array<WORD, 2> translation = {0x409, 0x4B0};
    static const std::array<wchar_t, 4> version = {L'1', L'.', L'2', L'\0'};
    if (std::wstring_view(name) == L"\\VarFileInfo\\Translation") {
        *found = const_cast<WORD*>(translation.data());
        *size = versionScene.translationSize;
        return versionScene.hasTranslation ? TRUE : FALSE;
    }
    EXPECT_EQ(std::wstring_view(name), L"\\StringFileInfo\\040904b0\\ProductVersion");
    *found = const_cast<wchar_t*>(version.data());
    *size = versionScene.versionSize;
    return versionScene.hasVersion ? TRUE : FALSE;
}

FARPROC WINAPI FindVersionFunction(HMODULE /*library*/, LPCSTR name) {
    if (versionScene.missing == name) {
        return nullptr;
    }
    if (std::string_view(name) == "GetFileVersionInfoSizeW") {
        return std::bit_cast<FARPROC>(&SizeOfVersion);
    }
    return std::string_view(name) == "GetFileVersionInfoW" ? std::bit_cast<FARPROC>(&ReadVersion)
                                                           : std::bit_cast<FARPROC>(&QueryVersion);
}

TEST(VersionFaultsTest, VersionThatCannotBeReadIsAQuestionMark) {
    const ImportPatch<decltype(&GetProcAddress)> patch("GetProcAddress", FindVersionFunction);
    struct Case {
        const char* name;
        VersionScene scene;
        const wchar_t* version;
    };
    const Case cases[] = {
        {"whole", {}, L"1.2"},
        {"no resource", {.size = 0}, L"?"},
        {"unreadable resource", {.isRead = FALSE}, L"?"},
        {"no translation", {.hasTranslation = false}, L"?"},
        {"half a translation", {.translationSize = 2}, L"?"},
        {"no version", {.hasVersion = false}, L"?"},
        {"empty version", {.versionSize = 0}, L"?"},
        {"no function for the size", {.missing = "GetFileVersionInfoSizeW"}, L"?"},
        {"no function to read", {.missing = "GetFileVersionInfoW"}, L"?"},
        {"no function to query", {.missing = "VerQueryValueW"}, L"?"},
    };
    for (const Case& item : cases) {
        versionScene = item.scene;
        EXPECT_EQ(GetProductVersion(), item.version) << item.name;
    }
    versionScene = VersionScene{};
    {
        const auto refused = Refuse<decltype(&GetModuleFileNameW), 0U>("GetModuleFileNameW");
        EXPECT_EQ(GetProductVersion(), L"?");
    }
    const ImportPatch<decltype(&GetModuleFileNameW)> cut("GetModuleFileNameW", CutPath);
    EXPECT_EQ(GetProductVersion(), L"?");
}

}  // namespace
}  // namespace morvane::test
