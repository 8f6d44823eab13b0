// The windows that the menu offers, and the active window.

#include "pin/candidates.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "base/process.h"
#include "desktop/engine_fixture.h"
#include "pin/engine.h"
#include "support/test_environment.h"
#include "support/window_state.h"
#include "ui/active_window.h"

namespace morvane::test {
namespace {

class CandidatesTest : public EngineTest {
protected:
    // The offered titles of the other process's windows; other windows of the session are left out.
    [[nodiscard]] std::vector<std::wstring> OfferedTitles() {
        std::vector<std::wstring> titles;
        for (const CandidateWindow& candidate : CandidateList()) {
            if (ProcessOf(candidate.window) == Other().ProcessId()) {
                titles.push_back(candidate.title);
            }
        }
        return titles;
    }

    [[nodiscard]] static bool IsOffered(HWND window) {
        return std::any_of(
            CandidateList().begin(), CandidateList().end(),
            [window](const CandidateWindow& candidate) { return candidate.window == window; });
    }
};

using Titles = std::vector<std::wstring>;

TEST_F(CandidatesTest, TitlesAreSortedByCodeUnit) {
    const Titles sorted = {
        L" blank first", L"10",       L"9",          L"Beta",
        L"Zebra",        L"Zebra 2",  L"_",          L"alpha",
        L"alpha b",      L"alphabet", L"\x00C4pfel", L"\x65E5\x672C",
        L"\xD83D\xDE00", L"\xFF21",
    };
    Titles created = sorted;
    std::reverse(created.begin(), created.end());
    std::swap(created[2], created[9]);
    for (const std::wstring& title : created) {
        static_cast<void>(Window(title));
    }
    RebuildCandidates();
    EXPECT_EQ(OfferedTitles(), sorted);
    EXPECT_TRUE(std::is_sorted(
        CandidateList().begin(), CandidateList().end(),
        [](const CandidateWindow& a, const CandidateWindow& b) { return a.title < b.title; }));
}

TEST_F(CandidatesTest, VisibleUnownedTitledForeignWindowsAreOffered) {
    const HWND owner = Window(L"Main window");
    const struct {
        const char* name;
        WindowSpec spec;
        bool offered;
    } cases[] = {
        {"ordinary", {}, true},
        {"tool window", {.exStyle = WS_EX_TOOLWINDOW}, true},
        {"topmost", {.exStyle = WS_EX_TOPMOST}, true},
        {"protected dialog", {.className = L"#32770", .title = L"Windows Security"}, true},
        {"without size", {.style = WS_POPUP, .width = 0, .height = 0}, true},
        {"class that only resembles ours", {.className = L"MorvaneHiddenWindow2"}, true},
        {"invisible", {.visible = false}, false},
        {"owned", {.style = WS_POPUP | WS_CAPTION, .owner = owner}, false},
        {"untitled", {.title = L""}, false},
        {"of our own class", {.className = L"MorvaneHiddenWindow"}, false},
    };
    for (const auto& item : cases) {
        const HWND window = Other().Create(item.spec);
        RebuildCandidates();
        EXPECT_EQ(IsOffered(window), item.offered) << item.name;
        Other().Destroy(window);
    }
    Other().Minimise(owner);
    RebuildCandidates();
    EXPECT_TRUE(IsOffered(owner)) << "minimised";
}

TEST_F(CandidatesTest, OwnWindowsAreExcludedByClassOnly) {
    const HWND window = Window(L"Alpha");
    Engine().ownWindow = window;
    Process().controlWindow = window;
    // The candidate list excludes a fixed class, whatever the engine's own class is.
    Engine().ownClassName = L"MorvaneTestWindow";
    RebuildCandidates();
    EXPECT_TRUE(IsOffered(window));
}

TEST_F(CandidatesTest, TitlesAreKeptUnchangedUpTo511Units) {
    const std::wstring strange = L"a\xD83D\t\xFFFE\x200F & b\xDE00";
    const std::wstring longTitle = std::wstring(300, L'x') + std::wstring(300, L'y');
    static_cast<void>(Window(longTitle));
    static_cast<void>(Window(std::wstring(511, L'z')));
    static_cast<void>(Window(strange));
    RebuildCandidates();
    EXPECT_EQ(OfferedTitles(),
              Titles({strange, longTitle.substr(0, 511), std::wstring(511, L'z')}));
}

TEST_F(CandidatesTest, WindowsWithTheSameTitleAreAllOffered) {
    std::vector<HWND> windows{Window(L"Same"), Window(L"Same"), Window(L"Same")};
    RebuildCandidates();
    EXPECT_EQ(OfferedTitles(), Titles(3, L"Same"));
    EXPECT_TRUE(std::all_of(windows.begin(), windows.end(), IsOffered));
}

TEST_F(CandidatesTest, ARowIsAPositionInTheListOrNothing) {
    static_cast<void>(Window(L"A"));
    static_cast<void>(Window(L"B"));
    RebuildCandidates();
    const std::size_t count = CandidateList().size();
    ASSERT_GE(count, 2U);
    EXPECT_EQ(CandidateInRow(0), &CandidateList().front());
    EXPECT_EQ(CandidateInRow(count - 1), &CandidateList().back());
    EXPECT_EQ(CandidateInRow(count), nullptr);
}

TEST_F(CandidatesTest, ListStaysUntilItIsRebuilt) {
    const HWND window = Window(L"Before");
    RebuildCandidates();
    Other().SetTitle(window, L"After");
    static_cast<void>(Window(L"New"));
    EXPECT_EQ(OfferedTitles(), Titles({L"Before"}));
    RebuildCandidates();
    EXPECT_EQ(OfferedTitles(), Titles({L"After", L"New"}));
    Other().Destroy(window);
    EXPECT_TRUE(IsOffered(window));
    RebuildCandidates();
    EXPECT_FALSE(IsOffered(window));
}

TEST_F(CandidatesTest, UsableActiveWindowIsVisibleAliveRestoredAndHasASize) {
    const HWND owner = Window(L"Owner");
    const struct {
        const char* name;
        WindowSpec spec;
        bool usable;
    } cases[] = {
        {"ordinary", {}, true},
        {"untitled", {.title = L""}, true},
        {"owned", {.style = WS_POPUP | WS_CAPTION, .owner = owner}, true},
        {"protected dialog", {.className = L"#32770", .title = L"Credential"}, true},
        {"one pixel", {.style = WS_POPUP, .width = 1, .height = 1}, true},
        {"without width", {.style = WS_POPUP, .width = 0, .height = 50}, false},
        {"without height", {.style = WS_POPUP, .width = 50, .height = 0}, false},
        {"invisible", {.visible = false}, false},
        {"of our own class", {.className = L"MorvaneHiddenWindow"}, false},
        {"class name that starts with a taskbar's", {.className = L"Shell_TrayWnd2"}, true},
        {"class name that is only part of one", {.className = L"Shell_Tray"}, true},
        {"class name in another case", {.className = L"notifyiconoverflowwindow"}, true},
    };
    for (const auto& item : cases) {
        const HWND window = Other().Create(item.spec);
        ASSERT_EQ(WindowClass(window), item.spec.className) << item.name;
        EXPECT_EQ(IsUsableActiveWindow(window), item.usable) << item.name;
        Other().Destroy(window);
        EXPECT_FALSE(IsUsableActiveWindow(window)) << item.name << ", dead";
    }
    EXPECT_FALSE(IsUsableActiveWindow(nullptr));
    EXPECT_TRUE(IsUsableActiveWindow(owner));
    Other().Minimise(owner);
    EXPECT_FALSE(IsUsableActiveWindow(owner)) << "minimised";
    Other().Restore(owner);
    Process().controlWindow = owner;
    EXPECT_FALSE(IsUsableActiveWindow(owner)) << "the control window";
}

TEST_F(CandidatesTest, ActiveWindowIsTheForegroundWindowIfUsable) {
    const HWND first = Window(L"First");
    const HWND second = Window(L"Second");
    ASSERT_TRUE(Other().BringToForeground(first));
    PrepareMenuState();
    EXPECT_EQ(ActiveWindow(), first);
    ASSERT_TRUE(Other().BringToForeground(second));
    EXPECT_EQ(ActiveWindow(), first) << "unchanged until the next preparation";
    PrepareMenuState();
    EXPECT_EQ(ActiveWindow(), second);
}

TEST_F(CandidatesTest, UnusableForegroundWindowDoesNotReplaceTheLastUsableOne) {
    const HWND noted = Window(L"Noted");
    const HWND unusable = Other().Create({.className = L"MorvaneHiddenWindow", .title = L"Own"});
    ASSERT_TRUE(Other().BringToForeground(noted));
    NoteForegroundWindow();
    ASSERT_TRUE(Other().BringToForeground(unusable));
    NoteForegroundWindow();
    PrepareMenuState();
    EXPECT_EQ(ActiveWindow(), noted);
    const HWND later = Window(L"Later");
    ASSERT_TRUE(Other().BringToForeground(later));
    PrepareMenuState();
    ASSERT_TRUE(Other().BringToForeground(unusable));
    PrepareMenuState();
    EXPECT_EQ(ActiveWindow(), later) << "preparation notes the window";
    Other().Destroy(later);
    PrepareMenuState();
    EXPECT_EQ(ActiveWindow(), later) << "kept although it is dead";
    EXPECT_FALSE(IsUsableActiveWindow(ActiveWindow()));
}

TEST_F(CandidatesTest, PreparationBindsReloadsAndRebuilds) {
    const HWND control = Window(L"Control");
    Process().controlWindow = control;
    Engine().settingsPath = L"C:\\elsewhere\\config.txt";
    Engine().pinList.entries = {{.pattern = L"stale"}};
    WriteSettings("@pinning=0\nfresh\t0\t600\n");
    PrepareMenuState();
    EXPECT_EQ(Engine().settingsPath, SettingsPath());
    EXPECT_EQ(Engine().ownWindow, control);
    EXPECT_FALSE(Engine().pinList.pinning);
    ASSERT_EQ(Engine().pinList.entries.size(), 1U);
    EXPECT_EQ(Engine().pinList.entries[0].pattern, L"fresh");
    EXPECT_EQ(Engine().pinList.entries[0].minHeight, 600);
    EXPECT_EQ(OfferedTitles(), Titles({L"Control"}));
}

}  // namespace
}  // namespace morvane::test
