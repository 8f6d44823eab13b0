// Tests of the harness: pointer, keys, screen, tray and profile work as the other tests expect.

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "base/win_shell.h"
#include "support/actor.h"
#include "support/screen.h"
#include "support/test_environment.h"
#include "support/test_files.h"
#include "support/tray.h"
#include "support/tray_recorder.h"
#include "support/user_input.h"
#include "support/wait.h"
#include "support/window_owner.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

using namespace std::chrono_literals;

constexpr COLORREF Red = RGB(0xC0, 0x20, 0x10);
constexpr COLORREF Blue = RGB(0x10, 0x20, 0xC0);
constexpr UINT WmTrayTest = WM_APP + 1;

bool Received(Actor& actor, HWND window, UINT message) {
    return WaitUntil([&] {
        const std::vector<InputEvent> events = actor.Input(window);
        return std::any_of(events.begin(), events.end(),
                           [message](const InputEvent& event) { return event.message == message; });
    });
}

TEST(HarnessTest, RealClicksReachAForeignWindow) {
    struct Case {
        const char* name;
        MouseButton button;
        UINT down;
        UINT up;
    };
    const std::vector<Case> cases = {
        {"left", MouseButton::Left, WM_LBUTTONDOWN, WM_LBUTTONUP},
        {"right", MouseButton::Right, WM_RBUTTONDOWN, WM_RBUTTONUP},
    };
    Actor actor;
    const HWND window = actor.Create({.title = L"Clicked"});
    for (const Case& item : cases) {
        actor.ForgetRecords(window);
        Click({300, 250}, item.button);
        EXPECT_TRUE(Received(actor, window, item.down)) << item.name;
        EXPECT_TRUE(Received(actor, window, item.up)) << item.name;
        actor.ForgetRecords(window);
        PressButton(item.button);
        EXPECT_TRUE(Received(actor, window, item.down)) << item.name << " pressed";
        ReleaseButton(item.button);
        EXPECT_TRUE(Received(actor, window, item.up)) << item.name << " released";
    }
}

TEST(HarnessTest, ClickBringsAWindowToTheForeground) {
    Actor actor;
    const HWND left = actor.Create({.title = L"Lower", .x = 100, .width = 300});
    const HWND right = actor.Create({.title = L"Upper", .x = 300, .width = 300});
    ASSERT_TRUE(actor.BringToForeground(right));
    Click({200, 300}, MouseButton::Left);
    EXPECT_TRUE(WaitUntil([&] { return GetForegroundWindow() == left; }));
    EXPECT_TRUE(WaitUntil([&] { return IsAbove(left, right); }));
}

TEST(HarnessTest, KeysReachTheForegroundWindow) {
    Actor actor;
    const HWND window = actor.Create({.title = L"Typed into"});
    ASSERT_TRUE(actor.BringToForeground(window));
    TapKey(VK_F5);
    EXPECT_TRUE(Received(actor, window, WM_KEYDOWN));
    EXPECT_TRUE(Received(actor, window, WM_KEYUP));
    EXPECT_EQ(actor.Input(window).front().x, VK_F5);
}

TEST(HarnessTest, ScreenShowsTheTopmostOfForeignWindows) {
    Actor actor;
    const HWND red = actor.Create({.title = L"Red", .colour = Red});
    const HWND blue = actor.Create({.title = L"Blue", .colour = Blue});
    constexpr POINT Inside{300, 250};
    EXPECT_TRUE(WaitUntil([&] { return PixelAt(Inside) == Blue; }));
    actor.Raise(red);
    EXPECT_TRUE(WaitUntil([&] { return PixelAt(Inside) == Red; }));
    actor.SetTopmost(blue, true);
    EXPECT_TRUE(WaitUntil([&] { return PixelAt(Inside) == Blue; }));
    const Picture picture = CaptureScreen({290, 240, 310, 250});
    EXPECT_EQ(picture.pixels.size(), 200U);
    EXPECT_EQ(picture.Count(Blue), 200U);
    EXPECT_FALSE(PixelAt({-5, -5}).has_value());
}

// A tray icon of this process, and the mouse messages that the taskbar sends it.
class OwnTrayIcon {
public:
    explicit OwnTrayIcon(const wchar_t* tip) {
        WNDCLASSW iconClass{};
        iconClass.lpfnWndProc = IconProc;
        iconClass.hInstance = GetModuleHandleW(nullptr);
        iconClass.lpszClassName = L"MorvaneHarnessIcon";
        RegisterClassW(&iconClass);
        data_.cbSize = sizeof(data_);
        window_ = MessageOnlyWindow(iconClass.lpszClassName);
        data_.hWnd = window_.get();
        data_.uID = 1;
        data_.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
        data_.uCallbackMessage = WmTrayTest;
        data_.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
        lstrcpynW(data_.szTip, tip, static_cast<int>(std::size(data_.szTip)));
        SetWindowLongPtrW(data_.hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&heard_));
    }
    OwnTrayIcon(const OwnTrayIcon&) = delete;
    OwnTrayIcon& operator=(const OwnTrayIcon&) = delete;
    OwnTrayIcon(OwnTrayIcon&&) = delete;
    OwnTrayIcon& operator=(OwnTrayIcon&&) = delete;
    ~OwnTrayIcon() { Remove(); }

    bool Add() { return Shell_NotifyIconW(NIM_ADD, &data_) != FALSE; }
    bool Remove() { return Shell_NotifyIconW(NIM_DELETE, &data_) != FALSE; }
    bool ShowBalloon(const wchar_t* title, const wchar_t* text, DWORD kind) const {
        NOTIFYICONDATAW balloon = data_;
        balloon.uFlags = NIF_INFO;
        balloon.dwInfoFlags = kind;
        lstrcpynW(balloon.szInfoTitle, title, static_cast<int>(std::size(balloon.szInfoTitle)));
        lstrcpynW(balloon.szInfo, text, static_cast<int>(std::size(balloon.szInfo)));
        return Shell_NotifyIconW(NIM_MODIFY, &balloon) != FALSE;
    }
    [[nodiscard]] bool Hears(UINT mouseMessage) const {
        return WaitUntil(
            [&] { return std::find(heard_.begin(), heard_.end(), mouseMessage) != heard_.end(); },
            DefaultTimeout, Messages::PumpAll);
    }
    [[nodiscard]] HWND Window() const { return data_.hWnd; }

private:
    static LRESULT CALLBACK IconProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WmTrayTest) {
            auto* heard =
                reinterpret_cast<std::vector<UINT>*>(GetWindowLongPtrW(window, GWLP_USERDATA));
            heard->push_back(static_cast<UINT>(lParam));
            return 0;
        }
        return DefWindowProcW(window, message, wParam, lParam);
    }

    NOTIFYICONDATAW data_{};
    std::vector<UINT> heard_;
    WindowOwner window_;
};

TEST(HarnessTest, TrayIconCanBeFoundClickedAndSeenToDisappear) {
    ASSERT_TRUE(WaitForTaskbar());
    OwnTrayIcon icon(L"Harness tip");
    EXPECT_FALSE(TrayIconPresent(icon.Window()));
    EXPECT_FALSE(TrayIconRect(icon.Window()).has_value());
    ASSERT_TRUE(icon.Add());
    EXPECT_TRUE(TrayIconPresent(icon.Window()));
    const POINT centre = WaitForTrayIcon(icon.Window());
    Click(centre, MouseButton::Left);
    EXPECT_TRUE(icon.Hears(WM_LBUTTONUP));
    Click(centre, MouseButton::Right);
    EXPECT_TRUE(icon.Hears(WM_RBUTTONUP));
    MovePointer({640, 300});
    EXPECT_TRUE(icon.Remove());
    EXPECT_FALSE(TrayIconPresent(icon.Window()));
    EXPECT_FALSE(TrayIconRect(icon.Window()).has_value());
}

TEST(HarnessTest, RecorderRecordsEveryTrayCallInPlaceOfTheShell) {
    ASSERT_TRUE(WaitForTaskbar());
    OwnTrayIcon icon(L"Recorded tip");
    {
        const TrayRecorder recorder;
        EXPECT_TRUE(icon.Add());
    }
    EXPECT_FALSE(TrayIconPresent(icon.Window()));
    TrayRecorder recorder;
    recorder.RefuseNext(1);
    EXPECT_FALSE(icon.Add());
    EXPECT_TRUE(icon.Add());
    EXPECT_TRUE(icon.ShowBalloon(L"Title", L"Text", NIIF_WARNING));
    EXPECT_TRUE(icon.Remove());
    const std::vector<TrayCall> calls = recorder.Calls();
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[1].message, static_cast<DWORD>(NIM_ADD));
    EXPECT_EQ(calls[1].window, icon.Window());
    EXPECT_EQ(calls[1].id, 1U);
    EXPECT_EQ(calls[1].flags, static_cast<UINT>(NIF_MESSAGE | NIF_ICON | NIF_TIP));
    EXPECT_EQ(calls[1].callbackMessage, WmTrayTest);
    EXPECT_EQ(calls[1].tip, L"Recorded tip");
    EXPECT_GT(calls[1].iconWidth, 0);
    EXPECT_EQ(calls[2].message, static_cast<DWORD>(NIM_MODIFY));
    EXPECT_EQ(calls[2].flags, static_cast<UINT>(NIF_INFO));
    EXPECT_EQ(calls[2].infoTitle, L"Title");
    EXPECT_EQ(calls[2].info, L"Text");
    EXPECT_EQ(calls[2].infoFlags, static_cast<DWORD>(NIIF_WARNING));
    EXPECT_EQ(calls[3].message, static_cast<DWORD>(NIM_DELETE));
}

TEST(HarnessTest, ProfileFoldersAreResetAndRedirected) {
    MORVANE_REQUIRE_DISPOSABLE_PROFILE();
    ASSERT_TRUE(WriteSettings("abc\r\n"));
    EXPECT_EQ(ReadSettings(), "abc\r\n");
    ASSERT_TRUE(WriteFileBytes(StartupShortcut(), "not a link"));
    ResetProfile();
    EXPECT_FALSE(PathExists(DataFolder()));
    EXPECT_FALSE(PathExists(StartupShortcut()));
    EXPECT_TRUE(PathExists(StartupFolder()));
    const std::wstring usual = RoamingFolder();
    {
        const std::wstring other = usual + L"\\Other place \x65E5\x672C";
        const ShellFolderOverride redirected(L"AppData", other);
        EXPECT_EQ(RoamingFolder(), other);
    }
    EXPECT_EQ(RoamingFolder(), usual);
}

TEST(HarnessTest, LinkInPlaceOfTheDataFolderIsAReparsePointAndLeadsToItsTarget) {
    MORVANE_REQUIRE_DISPOSABLE_PROFILE();
    const LinkedAppData linked(LinkPlace::DataFolder);
    const std::wstring kept = linked.Target() + L"\\kept.txt";
    ASSERT_TRUE(WriteFileBytes(kept, "kept"));
    EXPECT_NE(GetFileAttributesW(DataFolder().c_str()) & FILE_ATTRIBUTE_REPARSE_POINT, 0U);
    EXPECT_EQ(ReadFileBytes(DataFolder() + L"\\kept.txt"), "kept");
}

}  // namespace
}  // namespace morvane::test
