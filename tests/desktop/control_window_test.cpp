// The program's real control window: creation and destruction, timers, and its part in the menu.

#include "app/control_window.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/gui_owners.h"
#include "base/owners.h"
#include "base/process.h"
#include "base/win_shell.h"
#include "desktop/about_fixture.h"
#include "desktop/canvas.h"
#include "desktop/control_stand_in.h"
#include "desktop/engine_fixture.h"
#include "desktop/menu_fixture.h"
#include "desktop/menu_reader.h"
#include "pin/engine.h"
#include "support/import_watch.h"
#include "support/languages.h"
#include "support/test_environment.h"
#include "support/tray_recorder.h"
#include "support/user_input.h"
#include "support/wait.h"
#include "support/window_owner.h"
#include "support/window_state.h"
#include "ui/active_window.h"
#include "ui/menu_rows.h"
#include "ui/tray_icon.h"

namespace morvane::test {
namespace {

constexpr UINT_PTR PassTimer = 1;
constexpr UINT_PTR MenuTimer = 3;
constexpr UINT_PTR ComparisonTimer = 99;  // unknown to the control window
constexpr UINT Period = 50;               // milliseconds

struct Received {
    UINT message;
    WPARAM wParam;
};

// The messages that the control window has received.
std::vector<Received> received;
WNDPROC ownProcedure = nullptr;

LRESULT CALLBACK Record(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    received.push_back({message, wParam});
    return CallWindowProcW(ownProcedure, window, message, wParam, lParam);
}

std::ptrdiff_t Ticks(UINT_PTR timer) {
    return std::count_if(received.begin(), received.end(), [timer](const Received& item) {
        return item.message == WM_TIMER && item.wParam == timer;
    });
}

// The control window's platform calls while they are watched, in words.
Requests requests;
HWND timerWindow = nullptr;

void Note(const char* function, auto argument) {
    requests.push_back(function + std::to_string(argument));
}

struct RequestWatch {
    ImportWatch<decltype(&SetTimer)> start{
        "SetTimer", [](HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) {
            timerWindow = procedure == nullptr ? window : nullptr;
            Note("entries read ", Engine().pinList.entries.size());
            Note("start timer ", id);
            Note("period ", period);
        }};
    ImportWatch<decltype(&KillTimer)> stop{
        "KillTimer", [](HWND /*window*/, UINT_PTR id) { Note("stop timer ", id); }};
    ImportWatch<decltype(&Shell_NotifyIconW)> icon{
        "Shell_NotifyIconW", [](DWORD message, auto /*data*/) { Note("icon ", message); }};
    ImportWatch<decltype(&SetWindowPos)> place{
        "SetWindowPos", [](HWND /*window*/, HWND after, auto... /*rest*/) {
            Note("place ", reinterpret_cast<std::intptr_t>(after));
        }};
    ImportWatch<decltype(&PostQuitMessage)> quit{"PostQuitMessage",
                                                 [](int code) { Note("quit ", code); }};
};

class ControlWindowTest : public EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        ChooseLanguage(L"en");
        MakeFirstOpening(steps_);
        recorder_.emplace();
        Process().instance = GetModuleHandleW(nullptr);
        ASSERT_TRUE(RegisterControlWindowClass(Process().instance));
        class_.reset(ControlWindowClass);
        CreateControl();
    }

    void TearDown() override {
        DestroyControl();
        EngineTest::TearDown();
    }

    void CreateControl() {
        window_.reset(CreateControlWindow(Process().instance));
        ASSERT_TRUE(window_);
        Process().controlWindow = window_.get();
        received.clear();
        ownProcedure = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(window_.get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Record)));
    }

    void DestroyControl() {
        window_.reset();
        // Also removes the quit message that the window posted.
        ControlStandIn::Pump();
    }

    [[nodiscard]] HWND Control() const { return window_.get(); }

    // Dispatches messages until the steps are done.
    void Walk(const std::function<void()>& begin, std::vector<ControlStandIn::Step> steps) {
        bool done = false;
        steps_.Run(
            [&] {
                begin();
                EXPECT_TRUE(WaitUntil([&done] { return done; }, DefaultTimeout, Messages::PumpAll));
            },
            std::move(steps),
            [&done] {
                EndMenu();
                CloseAbout();
                done = true;
            });
    }

    // The same, with About and then the menu opened first.
    void WalkWithMenuOverAbout(std::vector<ControlStandIn::Step> steps) {
        std::vector<ControlStandIn::Step> all = {
            AboutHasFocus,
            [this] {
                PostMessageW(Control(), WM_TRAYICON, 1, WM_RBUTTONUP);
                return true;
            },
            [] { return MenusOpen(1); },
        };
        all.insert(all.end(), steps.begin(), steps.end());
        Walk([this] { PostMessageW(Control(), WM_COMMAND, 1009, 0); }, std::move(all));
    }

private:
    ComApartment com_;
    ControlStandIn steps_{L"MorvaneTestSteps"};
    std::optional<TrayRecorder> recorder_;
    WindowClassOwner class_;
    WindowOwner window_;
};

TEST_F(ControlWindowTest, ClassHasNeitherStyleNorBackground) {
    WNDCLASSW info{};
    ASSERT_NE(GetClassInfoW(GetModuleHandleW(nullptr), ControlWindowClass, &info), FALSE);
    EXPECT_EQ(info.style, 0U);
    EXPECT_EQ(info.hCursor, LoadCursorW(nullptr, IDC_ARROW));
    EXPECT_EQ(info.hbrBackground, nullptr);
}

TEST_F(ControlWindowTest, EverythingStartsAndStopsInItsOrder) {
    static_cast<void>(Window(L"Target"));
    DestroyControl();
    WriteSettings("target\n");
    const RequestWatch watch;
    CreateControl();
    EXPECT_EQ(std::exchange(requests, {}),
              Requests({"entries read 1", "start timer 1", "period 500", "icon 0", "place -1"}));
    EXPECT_EQ(timerWindow, Control()) << "it gets the ticks";
    DestroyControl();
    EXPECT_EQ(std::exchange(requests, {}),
              Requests({"stop timer 1", "stop timer 2", "place -2", "icon 2", "quit 0"}));
}

TEST_F(ControlWindowTest, WindowsOfItsClassAreNotPinnedFromItsCreationOn) {
    DestroyControl();
    Engine().ownClassName.clear();
    const HWND other = Other().Create({.className = ControlWindowClass, .title = L"Target"});
    const HWND target = Window(L"Target");
    WriteSettings("target\n");
    CreateControl();
    EXPECT_TRUE(IsTopmost(target));
    EXPECT_FALSE(IsTopmost(other));
}

TEST_F(ControlWindowTest, ForegroundWindowIsNotedAtCreationAndAtAPassTick) {
    const HWND unusable = Other().Create({.className = ControlWindowClass});
    const auto noted = [&] {
        EXPECT_TRUE(Other().BringToForeground(unusable));
        PrepareMenuState();
        return ActiveWindow();
    };
    DestroyControl();
    const HWND first = Window(L"At the creation");
    ASSERT_TRUE(Other().BringToForeground(first));
    CreateControl();
    EXPECT_EQ(noted(), first);
    const HWND second = Window(L"At a tick");
    for (const auto& [timer, expected] :
         {std::pair{ComparisonTimer, first}, std::pair{PassTimer, second}}) {
        ASSERT_TRUE(Other().BringToForeground(second));
        SendMessageW(Control(), WM_TIMER, timer, 0);
        EXPECT_EQ(noted(), expected) << timer;
    }
}

TEST_F(ControlWindowTest, TickThatRaisesAWindowRaisesTheDialogAndTheMenuOnce) {
    const HWND cover = Window(L"Cover");
    const auto askedByATick = [this](const char* settings) {
        std::vector<HWND> asked;
        WriteSettings(settings);
        const ImportWatch<decltype(&SetWindowPos)> watch(
            "SetWindowPos", [&asked](HWND window, auto... /*rest*/) { asked.push_back(window); });
        SendMessageW(Control(), WM_TIMER, PassTimer, 0);
        return asked;
    };
    WalkWithMenuOverAbout({[&] {
        const std::vector<HWND> all = {cover, AboutDialog(), OpenMenuWindows().front()};
        const struct {
            const char* settings;
            std::vector<HWND> asked;
        } ticks[] = {
            {"", {}},
            {"nobody\n", {}},
            {"@pinning=0\ncover\n", {}},
            {"cover\n", all},
            {"cover\n", all},
            {"@pinning=0\ncover\n", {cover}},
            {"@pinning=0\ncover\n", {}},
            {"cover\n", all},
            {"nobody\n", {}},
        };
        int tick = 0;
        for (const auto& [settings, asked] : ticks) {
            EXPECT_EQ(askedByATick(settings), asked) << tick++ << ": " << settings;
        }
        return true;
    }});
}

TEST_F(ControlWindowTest, MenuTimerOpensTheMenuOnceInTheMiddleOfTheScreen) {
    POINT cursor{};
    RECT frame{};
    std::ptrdiff_t ticks = 0;
    // The comparison timer shows how often the menu timer would have fired again.
    const auto sixMoreTicks = [&ticks] { return Ticks(ComparisonTimer) >= ticks + 6; };
    MovePointer({10, 10});
    Walk(
        [this] {
            SetTimer(Control(), MenuTimer, Period, nullptr);
            SetTimer(Control(), ComparisonTimer, Period, nullptr);
        },
        {[] { return MenusOpen(1); },
         [&] {
             GetCursorPos(&cursor);
             frame = WindowRect(OpenMenuWindows().front());
             ticks = Ticks(ComparisonTimer);
             return true;
         },
         sixMoreTicks,
         [] {
             EXPECT_TRUE(MenusOpen(1));
             EndMenu();
             return true;
         },
         [&] {
             ticks = Ticks(ComparisonTimer);
             return MenusOpen(0);
         },
         sixMoreTicks});
    EXPECT_EQ(Ticks(MenuTimer), 1);
    EXPECT_EQ(std::ranges::count(received, UINT{WM_ENTERMENULOOP}, &Received::message), 1);
    EXPECT_EQ(cursor.x, GetSystemMetrics(SM_CXSCREEN) / 2);
    EXPECT_EQ(cursor.y, GetSystemMetrics(SM_CYSCREEN) / 2);
    EXPECT_EQ(frame.left, cursor.x);
    EXPECT_EQ(frame.bottom, cursor.y);
}

TEST_F(ControlWindowTest, EveryTickRaisesAPinnedWindowThenTheDialogThenTheMenu) {
    WriteSettings("cover\n");
    const HWND cover = Other().Create(
        {.title = L"Cover", .style = WS_POPUP, .x = 0, .y = 0, .width = 1280, .height = 800});
    RECT work{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    // Moves the real pointer: a late report of its position would undo SetCursorPos.
    const POINT pointer{work.right - 200, work.bottom - 40};
    MovePointer(pointer);
    constexpr std::ptrdiff_t Passes = 3;
    std::ptrdiff_t judged = 0;
    std::vector<HWND> order;
    std::vector<HWND> asked;
    const ImportWatch<decltype(&SetWindowPos)> watch(
        "SetWindowPos", [&asked](HWND window, auto... /*rest*/) { asked.push_back(window); });
    const auto begin = [&] {
        order = {OpenMenuWindows().front(), AboutDialog(), cover};
        const RECT dialog = WindowRect(order[1]);
        EXPECT_NE(PtInRect(&dialog, pointer), FALSE) << "the menu must overlap the dialog";
        received.clear();
        asked.clear();
        return true;
    };
    const auto judge = [&] {
        std::vector<HWND> expected;
        for (; judged < Ticks(PassTimer); ++judged) {
            expected.insert(expected.end(), order.rbegin(), order.rend());
        }
        EXPECT_EQ(std::exchange(asked, {}), expected);
        return judged >= Passes;
    };
    const auto look = [&] {
        const auto tick = [this] { SendMessageW(Control(), WM_TIMER, PassTimer, 0); };
        EXPECT_TRUE(test::DesktopShows(order, tick));
        return true;
    };
    WalkWithMenuOverAbout({begin, judge, look});
}

TEST_F(ControlWindowTest, OnlyMessagesAboutOurOwnRowsAreHandled) {
    constexpr UINT Unset = 4711;
    const Menu menu(CreatePopupMenu());
    ClearMenuRows();
    AppendPinItem(menu.get(), 2500, L"Alpha", PinState::Pinned);
    for (const ULONG_PTR itemData : {ULONG_PTR{0}, ULONG_PTR{1}, ULONG_PTR{2}}) {
        SCOPED_TRACE(itemData);
        const bool ours = itemData == 1;
        const auto expectAnswer = [&](UINT message, void* item) {
            const auto parameter = reinterpret_cast<LPARAM>(item);
            EXPECT_EQ(SendMessageW(Control(), message, 0, parameter),
                      ours ? TRUE : DefWindowProcW(Control(), message, 0, parameter));
        };
        MEASUREITEMSTRUCT measure{};
        measure.CtlType = ODT_MENU;
        measure.itemData = itemData;
        measure.itemWidth = Unset;
        expectAnswer(WM_MEASUREITEM, &measure);
        EXPECT_EQ(measure.itemWidth != Unset, ours);
        const Canvas canvas(60, 20);
        DRAWITEMSTRUCT draw{};
        draw.CtlType = ODT_MENU;
        draw.hDC = canvas.Context();
        draw.rcItem = {0, 0, 60, 20};
        draw.itemData = itemData;
        expectAnswer(WM_DRAWITEM, &draw);
        EXPECT_EQ(canvas.PointsOf(Canvas::Untouched).size(), ours ? 0U : 60U * 20U);
    }
    for (const UINT message : {UINT{WM_MEASUREITEM}, UINT{WM_DRAWITEM}}) {
        EXPECT_EQ(SendMessageW(Control(), message, 0, 0), DefWindowProcW(Control(), message, 0, 0));
    }
    ClearMenuRows();
}

}  // namespace
}  // namespace morvane::test
