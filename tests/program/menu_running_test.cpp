// What continues while the tray menu or the About dialog is open.

#include "program/menu_scene.h"
#include "support/screen.h"
#include "support/tray.h"

namespace morvane::test {
namespace {

using MenuRunningTest = ProgramTest;

constexpr COLORREF CoverColour = RGB(0xC0, 0x10, 0x20);

// The two windows that the user may have open, and how to open each and tell that it is closed.
struct Front {
    const char* name;
    HWND (*open)(const Program& program);
    HWND (*find)(const Program& program);
    bool (*close)(const Program& program);
};

HWND FindMenu(const Program& program) {
    const std::vector<HWND> menus = MenuWindows(program);
    return menus.empty() ? nullptr : menus.back();
}

bool CloseAbout(const Program& program) {
    PostMessageW(AboutDialog(program), WM_CLOSE, 0, 0);
    return AboutCloses(program);
}

constexpr Front Fronts[] = {
    {"menu", OpenMenu, FindMenu, DismissMenu},
    {"About", OpenAbout, AboutDialog, CloseAbout},
};

TEST_F(MenuRunningTest, NewWindowIsPinned) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const Program program = StartedProgram();
    for (const Front& front : Fronts) {
        ASSERT_NE(front.open(program), nullptr) << front.name;
        const HWND target = actor.Create({.title = L"Target"});
        EXPECT_TRUE(BecomesTopmost(target)) << front.name;
        EXPECT_NE(front.find(program), nullptr) << front.name;
        EXPECT_TRUE(front.close(program)) << front.name;
        actor.Destroy(target);
    }
}

TEST_F(MenuRunningTest, PassesComeTwiceASecond) {
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    for (const Front& front : Fronts) {
        ASSERT_NE(front.open(program), nullptr) << front.name;
        actor.ForgetRecords(sentinel.Window());
        const std::vector<ULONGLONG> gaps = sentinel.PassGaps(8);
        ASSERT_GE(gaps.size(), 8U) << front.name;
        const ULONGLONG median = gaps[gaps.size() / 2];
        EXPECT_GE(median, 400U) << front.name;
        EXPECT_LE(median, 650U) << front.name;
        EXPECT_NE(front.find(program), nullptr) << front.name;
        EXPECT_TRUE(front.close(program)) << front.name;
    }
}

TEST_F(MenuRunningTest, EditOfTheFileTakesEffect) {
    Actor actor;
    const HWND target = actor.Create({.title = L"Target", .width = 300, .height = 200});
    for (const Front& front : Fronts) {
        ASSERT_TRUE(EditSettings(SettingsText(true, {"Nowhere"})));
        actor.Place(target, 100, 100, 300, 200);
        const Program program = StartedProgram();
        ASSERT_NE(front.open(program), nullptr) << front.name;
        EXPECT_FALSE(IsTopmost(target)) << front.name;
        ASSERT_TRUE(EditSettings(SettingsText(true, {"Target\t410\t310"})));
        EXPECT_TRUE(BecomesTopmost(target)) << front.name;
        EXPECT_TRUE(WaitUntil([&] { return WindowSize(target).cx == 410; })) << front.name;
        ASSERT_TRUE(EditSettings(SettingsText(false, {"Target\t410\t310"})));
        EXPECT_TRUE(BecomesOrdinary(target)) << front.name;
        EXPECT_NE(front.find(program), nullptr) << front.name;
        EXPECT_TRUE(front.close(program)) << front.name;
    }
}

TEST_F(MenuRunningTest, ClosingWindowsDoNoHarm) {
    ASSERT_TRUE(WriteSettings("Sentinel\nTarget\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    for (const Front& front : Fronts) {
        const HWND pinned = actor.Create({.title = L"Target"});
        const HWND ordinary = actor.Create({.title = L"Ordinary"});
        ASSERT_TRUE(BecomesTopmost(pinned)) << front.name;
        ASSERT_NE(front.open(program), nullptr) << front.name;
        actor.Destroy(pinned);
        actor.Destroy(ordinary);
        EXPECT_TRUE(sentinel.WaitForTimedPass()) << front.name;
        EXPECT_NE(front.find(program), nullptr) << front.name;
        EXPECT_TRUE(front.close(program)) << front.name;
    }
    EXPECT_TRUE(program.IsRunning());
}

std::size_t CoverPixels(const RECT& rect) {
    return CaptureScreen(rect).Count(CoverColour);
}

// A pass asks a window of the right size only to be topmost.
void ExpectRequestsOfPasses(Actor& actor, HWND window, std::size_t passes, const char* name) {
    const std::vector<PositionRequest> requests = actor.Requests(window);
    EXPECT_LE(requests.size(), passes + 1) << name;
    EXPECT_GE(requests.size() + 1, passes) << name;
    for (const PositionRequest& request : requests) {
        EXPECT_EQ(request.insertAfter, HWND_TOPMOST) << name;
        EXPECT_EQ(request.flags, 0x53U) << name;
    }
}

// The cover's minimum size makes it fill the screen and every pass raises it, yet it must not hide
// what the user is looking at.
TEST_F(MenuRunningTest, PinnedWindowOverTheWholeScreenHidesNothing) {
    ASSERT_TRUE(WriteSettings("Sentinel\nCover 1280 800\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const HWND cover = actor.Create({.title = L"Cover",
                                     .style = WS_POPUP,
                                     .x = 0,
                                     .y = 0,
                                     .width = 300,
                                     .height = 200,
                                     .colour = CoverColour});
    const Program program = StartedProgram();
    ASSERT_TRUE(WaitUntil([&] { return WindowSize(cover).cx == 1280; }));
    for (const Front& front : Fronts) {
        const HWND window = front.open(program);
        ASSERT_NE(window, nullptr) << front.name;
        const RECT rect = WindowRect(window);
        actor.ForgetRecords(cover);
        actor.ForgetRecords(sentinel.Window());
        for (int round = 0; round < 2; ++round) {
            // Three passes.
            ASSERT_TRUE(sentinel.WaitForTimedPass()) << front.name;
            EXPECT_TRUE(WaitUntil([&] { return IsAbove(window, cover); })) << front.name;
            EXPECT_TRUE(WaitUntil([&] { return CoverPixels(rect) == 0; })) << front.name;
        }
        ExpectRequestsOfPasses(actor, cover, sentinel.PassTicks().size(), front.name);
        EXPECT_TRUE(front.close(program)) << front.name;
        EXPECT_TRUE(WaitUntil([&] { return CoverPixels(rect) > 0; })) << front.name;
    }
}

TEST_F(MenuRunningTest, CommandsOfACoveredMenuCanBeChosen) {
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Sentinel", "Cover\t1280\t800"})));
    Actor actor;
    const Sentinel sentinel(actor);
    const HWND cover = actor.Create({.title = L"Cover", .x = 0, .y = 0, .colour = CoverColour});
    const Program program = StartedProgram();
    ASSERT_TRUE(WaitUntil([&] { return WindowSize(cover).cx == 1280; }));
    ASSERT_NE(OpenMenu(program), nullptr);
    ASSERT_TRUE(sentinel.WaitForTimedPass());
    const HWND submenu = OpenSubmenu(program, Item::AddRemove, Way::Mouse);
    ASSERT_NE(submenu, nullptr);
    const RECT rect = WindowRect(submenu);
    ASSERT_TRUE(sentinel.WaitForTimedPass());
    EXPECT_TRUE(WaitUntil([&] { return IsAbove(submenu, cover) && CoverPixels(rect) == 0; }));
    Click(CentreOf(RowRect(submenu, AddRemoveRow(L"Cover"))), MouseButton::Left);
    EXPECT_TRUE(MenuCloses(program));
    EXPECT_TRUE(FileBecomes(SettingsText(true, {"Sentinel"})));
    EXPECT_TRUE(BecomesOrdinary(cover));
}

TEST_F(MenuRunningTest, SubmenuStaysAboveItsMenu) {
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    const HWND menu = OpenMenu(program);
    ASSERT_NE(menu, nullptr);
    const HWND submenu = OpenSubmenu(program, Item::AddRemove, Way::Keyboard);
    ASSERT_NE(submenu, nullptr);
    ASSERT_TRUE(sentinel.WaitForTimedPass());
    EXPECT_TRUE(WaitUntil([&] {
        return MenuWindows(program) == std::vector<HWND>{submenu, menu} &&
               IsAbove(menu, sentinel.Window());
    }));
    EXPECT_TRUE(DismissMenu(program));
}

// The program is told to exit during a modal loop.
TEST_F(MenuRunningTest, ExitReleasesTheWindowsAndEndsTheProcess) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    for (const Front& front : Fronts) {
        const Program program = StartedProgram();
        ASSERT_TRUE(BecomesTopmost(target)) << front.name;
        const HWND control = program.ControlWindow();
        ASSERT_TRUE(TrayIconPresent(control)) << front.name;
        ASSERT_NE(front.open(program), nullptr) << front.name;
        ASSERT_TRUE(program.PostCommand(ExitCommand)) << front.name;
        EXPECT_EQ(program.WaitForExit(), 0U) << front.name;
        EXPECT_FALSE(IsTopmost(target)) << front.name;
        EXPECT_FALSE(TrayIconPresent(control)) << front.name;
        EXPECT_EQ(front.find(program), nullptr) << front.name;
        EXPECT_EQ(ReadSettings(), "Target\n") << front.name;
        const Program next;
        EXPECT_NE(next.WaitForControlWindow(), nullptr) << front.name;
        EXPECT_EQ(next.ExitByCommand(), 0U) << front.name;
    }
}

TEST_F(MenuRunningTest, ClosingTheControlWindowWhileASubmenuIsOpenEndsTheProcess) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(target));
    ASSERT_NE(OpenMenu(program), nullptr);
    ASSERT_NE(OpenSubmenu(program, Item::AddRemove, Way::Keyboard), nullptr);
    EXPECT_EQ(program.ExitByClose(), 0U);
    EXPECT_FALSE(IsTopmost(target));
    EXPECT_TRUE(MenuWindows(program).empty());
}

}  // namespace
}  // namespace morvane::test
