// Opening the menu or the dialog leaks nothing.

#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <string>

#include "desktop/about_fixture.h"
#include "desktop/menu_fixture.h"
#include "desktop/menu_reader.h"
#include "desktop/usage.h"
#include "support/child_process.h"
#include "support/test_environment.h"
#include "ui/about.h"
#include "ui/tray_menu.h"

namespace morvane::test {
namespace {

constexpr UINT CloseMessage = WM_APP + 50;
constexpr int WarmUp = 20;

// Makes many openings and measures before and after them. The full number takes minutes on a slow
// machine: set MORVANE_TEST_FULL=1 for it.
void ExpectSteady(const std::string& what, int usual, int full,
                  const std::function<void(int count)>& openMany) {
    openMany(WarmUp);
    const int openings = EnvironmentVariable(L"MORVANE_TEST_FULL") == L"1" ? full : usual;
    const Usage before = MeasureUsage();
    const ULONGLONG start = GetTickCount64();
    openMany(openings);
    const ULONGLONG took = GetTickCount64() - start;
    ExpectNothingLeft(
        what + ", " + std::to_string(openings) + " openings in " + std::to_string(took) + " ms",
        before, MeasureUsage());
}

class MenuLeakTest : public MenuTest {
protected:
    void SetUp() override {
        MenuTest::SetUp();
        Control().On(CloseMessage, [this] {
            if (OpenMenuWindows().size() < awaitedMenus_) {
                PostMessageW(Control().Get(), CloseMessage, 0, 0);
            } else {
                EndMenu();
            }
        });
    }

    // Opens the menu for real and closes it from within its message loop. Every tenth time the
    // submenu with sizes is opened first, because rows are measured and drawn only then.
    void OpenMany(int count) {
        const HWND control = Control().Get();
        for (int opening = 0; opening < count; ++opening) {
            const bool withRows = opening % 10 == 0;
            awaitedMenus_ = withRows ? 2 : 1;
            Control().Forget();
            if (withRows) {
                Press(ToMinSize());
            }
            PostMessageW(control, CloseMessage, 0, 0);
            ShowTrayMenu(control);
            ControlStandIn::Pump();
            ASSERT_EQ(Control().Count(WM_EXITMENULOOP), 1U) << opening;
            ASSERT_GE(Control().Count(CloseMessage), 1U) << opening;
            // The active window and three others.
            ASSERT_EQ(Control().Count(WM_MEASUREITEM), withRows ? 4U : 0U) << opening;
            ASSERT_GE(Control().Count(WM_DRAWITEM), withRows ? 4U : 0U) << opening;
        }
        Control().Forget();
    }

private:
    std::size_t awaitedMenus_ = 1;
};

TEST_F(MenuLeakTest, OpeningTheMenuLeavesNothingBehind) {
    WriteSettings("alpha\nbeta\t100\t100\n");
    const HWND window = Window(L"Alpha");
    static_cast<void>(Window(L"Beta"));
    static_cast<void>(Window(L"Gamma"));
    ASSERT_TRUE(Other().BringToForeground(window));
    ExpectSteady("menu", 300, 5'000, [this](int count) { OpenMany(count); });
}

class AboutLeakTest : public AboutDialogTest {
protected:
    void OpenMany(int count) {
        const HWND control = Control().Get();
        for (int opening = 0; opening < count; ++opening) {
            Control().Forget();
            PostMessageW(control, CloseMessage, 0, 0);
            ShowAboutDialog(control);
            ControlStandIn::Pump();
            ASSERT_EQ(Control().Count(CloseMessage), 1U) << opening;
            ASSERT_EQ(AboutDialog(), nullptr) << opening;
        }
        Control().Forget();
    }
};

TEST_F(AboutLeakTest, OpeningTheDialogLeavesNothingBehind) {
    Control().On(CloseMessage, [] {
        const HWND dialog = AboutDialog();
        ASSERT_NE(dialog, nullptr);
        UpdateWindow(dialog);
        PostMessageW(dialog, WM_CLOSE, 0, 0);
    });
    ExpectSteady("About", 100, 1'000, [this](int count) { OpenMany(count); });
}

}  // namespace
}  // namespace morvane::test
