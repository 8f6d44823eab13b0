// The tray menu's two window lists.

#include "program/menu_scene.h"
#include "support/screen.h"
#include "support/window_owner.h"

namespace morvane::test {
namespace {

using MenuListsTest = ProgramTest;

constexpr COLORREF CheckColour = RGB(22, 163, 74);
constexpr COLORREF ArrowColour = RGB(37, 99, 180);

// The rows of placeholders: the only one in "Add / Remove", the second in the other list.
constexpr Row NoWindowsToAdd{Item::AddRemove, 0, 1};
constexpr Row NoActiveWindow{Item::AddRemoveMinSize, 0, 2};
constexpr Row NoWindowsToMeasure{Item::AddRemoveMinSize, 1, 2};

// Settings filled to the limit of a hundred entries, ending in the given line.
std::string FullSettings(std::string_view lastLine) {
    std::string text(SettingsHeader);
    text += "@pinning=1\n";
    for (int i = 0; i < 99; ++i) {
        text += "Nowhere " + std::string(1, static_cast<char>('A' + i / 10)) +
                std::string(1, static_cast<char>('a' + i % 10)) + "\n";
    }
    return text.append(lastLine).append("\n");
}

// An invisible foreground window: while it exists, no window counts as active. In a session where
// no window has ever been in front, Wine's desktop is, and that counts.
WindowOwner InvisibleWindowInFront() {
    WindowOwner window = MessageOnlyWindow();
    EXPECT_TRUE(WaitUntil([&window] {
        SetForegroundWindow(window.get());
        return GetForegroundWindow() == window.get();
    }));
    return window;
}

// Whether the menus are still open once all clicks so far have taken effect: only an open menu
// follows the pointer to another item and back.
bool FollowsThePointer(const Program& program, HWND menu, Item submenu) {
    MovePointer(CentreOf(ItemRect(menu, Item::Exit)));
    return WaitUntil([&] { return MenuWindows(program) == std::vector<HWND>{menu}; }) &&
           OpenSubmenu(program, submenu, Way::Mouse) != nullptr;
}

TEST_F(MenuListsTest, PlaceholdersChooseNothing) {
    const TrayRecorder recorder;
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Nowhere"})));
    const WindowOwner front = InvisibleWindowInFront();
    const Program program = StartedProgram();
    ASSERT_EQ(RowTitles(), std::vector<std::wstring>{});
    for (const Row& row : {NoWindowsToAdd, NoActiveWindow, NoWindowsToMeasure}) {
        SCOPED_TRACE(testing::Message()
                     << "submenu " << static_cast<int>(row.submenu) << ", row " << row.place);
        const HWND menu = OpenMenu(program);
        ASSERT_NE(menu, nullptr);
        const HWND submenu = OpenSubmenu(program, row.submenu, Way::Mouse);
        ASSERT_NE(submenu, nullptr);
        Click(CentreOf(RowRect(submenu, row)), MouseButton::Left);
        EXPECT_TRUE(FollowsThePointer(program, menu, row.submenu)) << "after the click";
        EXPECT_TRUE(DismissMenu(program));

        ASSERT_NE(OpenMenu(program), nullptr);
        ASSERT_NE(OpenSubmenu(program, row.submenu, Way::Keyboard), nullptr);
        TapKeys(VK_DOWN, row.place);
        TapKey(VK_RETURN);
        // Wine closes a menu on Return over any item, so only a click tells grayed ones apart.
        EXPECT_TRUE(MenuCloses(program));
    }
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Nowhere"}));
    // Only the icon's own call, no balloon.
    ASSERT_EQ(recorder.Calls().size(), 1U) << testing::PrintToString(recorder.Calls().back().info);
}

TEST_F(MenuListsTest, AddRemoveChoiceUsesTheRemainingWindows) {
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Nowhere"})));
    Actor actor;
    const HWND alpha = actor.Create({.title = L"Alpha"});
    const HWND beta = actor.Create({.title = L"Beta"});
    const HWND gamma = actor.Create({.title = L"Gamma"});
    const Program program = StartedProgram();
    ASSERT_NE(OpenMenu(program), nullptr);
    const Row row = AddRemoveRow(L"Beta");
    actor.Destroy(alpha);
    ASSERT_TRUE(Choose(program, row, Way::Keyboard));
    EXPECT_TRUE(FileBecomes(SettingsText(true, {"Nowhere", "Gamma"})));
    EXPECT_TRUE(BecomesTopmost(gamma));
    EXPECT_FALSE(IsTopmost(beta));
}

TEST_F(MenuListsTest, AddRemoveChoiceBeyondTheRemainingWindowsDoesNothing) {
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Nowhere"})));
    Actor actor;
    const HWND alpha = actor.Create({.title = L"Alpha"});
    const HWND beta = actor.Create({.title = L"Beta"});
    const Program program = StartedProgram();
    ASSERT_NE(OpenMenu(program), nullptr);
    const Row row = AddRemoveRow(L"Beta");
    actor.Destroy(alpha);
    ASSERT_TRUE(Choose(program, row, Way::Keyboard));
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Nowhere"}));
    EXPECT_FALSE(IsTopmost(beta));
}

TEST_F(MenuListsTest, MinSizeChoiceKeepsTheWindowOfItsRow) {
    const TrayRecorder recorder;
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Nowhere"})));
    Actor actor;
    const HWND alpha = actor.Create({.title = L"Alpha"});
    const HWND beta = actor.Create({.title = L"Beta", .width = 410, .height = 310});
    static_cast<void>(actor.Create({.title = L"Gamma"}));
    const Program program = StartedProgram();
    ASSERT_NE(OpenMenu(program), nullptr);
    const Row row = MinSizeRow(L"Beta");
    actor.Destroy(alpha);
    ASSERT_TRUE(Choose(program, row, Way::Keyboard));
    EXPECT_EQ(WaitForBalloon(recorder).info, L"Minimum size set to 410 x 310.");
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Nowhere", "Beta\t410\t310"}));
    EXPECT_TRUE(BecomesTopmost(beta));
}

TEST_F(MenuListsTest, MinSizeChoiceOfAClosedWindowWarns) {
    const TrayRecorder recorder;
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Nowhere"})));
    Actor actor;
    static_cast<void>(actor.Create({.title = L"Alpha"}));
    const HWND beta = actor.Create({.title = L"Beta"});
    const Program program = StartedProgram();
    ASSERT_NE(OpenMenu(program), nullptr);
    const Row row = MinSizeRow(L"Beta");
    actor.Destroy(beta);
    ASSERT_TRUE(Choose(program, row, Way::Keyboard));
    EXPECT_EQ(WaitForBalloon(recorder).info, L"Could not read this window's size.");
    EXPECT_EQ(WaitForBalloon(recorder).infoFlags, static_cast<DWORD>(NIIF_WARNING));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Nowhere"}));
}

// A minimised window's row is missing from one list and present in the other.
TEST_F(MenuListsTest, RowsBelowAMinimisedWindowKeepTheirMeaning) {
    const TrayRecorder recorder;
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Nowhere"})));
    Actor actor;
    const HWND alpha = actor.Create({.title = L"Alpha"});
    static_cast<void>(actor.Create({.title = L"Beta", .width = 410, .height = 310}));
    actor.Minimise(alpha);
    const Program program = StartedProgram();
    ASSERT_TRUE(OpenAndChoose(program, {Item::AddRemoveMinSize, 1, 2}, Way::Mouse));
    EXPECT_EQ(WaitForBalloon(recorder).info, L"Minimum size set to 410 x 310.");
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Nowhere", "Beta\t410\t310"}));
    ASSERT_TRUE(OpenAndChoose(program, AddRemoveRow(L"Alpha"), Way::Mouse));
    EXPECT_TRUE(FileBecomes(SettingsText(true, {"Nowhere", "Beta\t410\t310", "Alpha"})));
    EXPECT_TRUE(BecomesTopmost(alpha));
}

TEST_F(MenuListsTest, MinimisedWindowsAloneLeaveOnlyTheActiveRow) {
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Nowhere"})));
    Actor actor;
    const Program program = StartedProgram();
    ASSERT_NE(OpenMenu(program), nullptr);
    const HWND empty = OpenSubmenu(program, Item::AddRemoveMinSize, Way::Mouse);
    ASSERT_NE(empty, nullptr);
    const LONG withPlaceholder = WindowSize(empty).cy;
    const RECT first = RowRect(empty, NoActiveWindow);
    ASSERT_TRUE(DismissMenu(program));
    actor.Minimise(actor.Create({.title = L"Alpha"}));
    actor.Minimise(actor.Create({.title = L"Beta"}));
    ASSERT_NE(OpenMenu(program), nullptr);
    const HWND submenu = OpenSubmenu(program, Item::AddRemoveMinSize, Way::Mouse);
    ASSERT_NE(submenu, nullptr);
    EXPECT_EQ(WindowSize(submenu).cy, withPlaceholder - (first.bottom - first.top));
    EXPECT_TRUE(DismissMenu(program));
}

TEST_F(MenuListsTest, ActiveWindowWithoutATitleWarns) {
    const TrayRecorder recorder;
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Nowhere"})));
    Actor actor;
    const HWND untitled = actor.Create({.title = L"", .width = 410, .height = 310});
    static_cast<void>(actor.Create({.title = L"Alpha", .x = 700}));
    const Program program = StartedProgram();
    ASSERT_TRUE(actor.BringToForeground(untitled));
    ASSERT_TRUE(OpenAndChoose(program, ActiveWindowRow(), Way::Mouse));
    EXPECT_EQ(WaitForBalloon(recorder).info, L"Could not read this window's title.");
    EXPECT_EQ(WaitForBalloon(recorder).infoFlags, static_cast<DWORD>(NIIF_WARNING));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Nowhere"}));
}

TEST_F(MenuListsTest, LongTitleIsPinnedInFull) {
    const std::wstring title = L"Long " + std::wstring(95, L'x');
    ASSERT_TRUE(WriteSettings(SettingsText(true, {"Nowhere"})));
    Actor actor;
    const HWND target = actor.Create({.title = title});
    const Program program = StartedProgram();
    ASSERT_TRUE(OpenAndChoose(program, AddRemoveRow(title), Way::Mouse));
    EXPECT_TRUE(FileBecomes(SettingsText(true, {"Nowhere", "Long " + std::string(95, 'x')})));
    EXPECT_TRUE(BecomesTopmost(target));
}

TEST_F(MenuListsTest, FullListTakesANewSizeAndNoNewWindow) {
    const TrayRecorder recorder;
    ASSERT_TRUE(WriteSettings(FullSettings("Beta")));
    Actor actor;
    const HWND alpha = actor.Create({.title = L"Alpha"});
    static_cast<void>(actor.Create({.title = L"Beta", .width = 410, .height = 310}));
    const Program program = StartedProgram();
    ASSERT_TRUE(OpenAndChoose(program, MinSizeRow(L"Alpha"), Way::Mouse));
    EXPECT_EQ(WaitForBalloon(recorder).info, L"Can't add more windows (limit reached).");
    EXPECT_EQ(WaitForBalloon(recorder).infoFlags, static_cast<DWORD>(NIIF_WARNING));
    EXPECT_EQ(ReadSettings(), FullSettings("Beta"));
    ASSERT_TRUE(OpenAndChoose(program, AddRemoveRow(L"Alpha"), Way::Mouse));
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_EQ(ReadSettings(), FullSettings("Beta"));
    EXPECT_FALSE(IsTopmost(alpha));
    ASSERT_TRUE(OpenAndChoose(program, MinSizeRow(L"Beta"), Way::Mouse));
    EXPECT_EQ(WaitForBalloon(recorder, 1).info, L"Minimum size set to 410 x 310.");
    EXPECT_EQ(ReadSettings(), FullSettings("Beta\t410\t310"));
}

TEST_F(MenuListsTest, ListsEndAtFiveHundredWindows) {
    const TrayRecorder recorder;
    ASSERT_TRUE(WriteSettings(SettingsText(false, {"Nowhere"})));
    Actor actor;
    // Small windows without a frame beyond the screen's edge cost the least.
    for (const wchar_t* title : {L"A", L"B", L"C", L"D", L"E", L"F"}) {
        static_cast<void>(actor.CreateMany(
            90,
            {.title = title, .style = WS_POPUP, .x = 3000, .y = 3000, .width = 20, .height = 15}));
    }
    const Program program = StartedProgram();
    const std::wstring last = RowTitles().at(499);
    const std::string line(last.begin(), last.end());
    for (const Item submenu : {Item::AddRemove, Item::AddRemoveMinSize}) {
        ASSERT_NE(OpenMenu(program), nullptr);
        ASSERT_NE(OpenSubmenu(program, submenu, Way::Keyboard), nullptr);
        // Up from the first row wraps around to the last.
        TapKey(VK_UP);
        TapKey(VK_RETURN);
        ASSERT_TRUE(MenuCloses(program));
        EXPECT_TRUE(FileBecomes(SettingsText(
            false, {"Nowhere", submenu == Item::AddRemove ? line : line + "\t20\t15"})));
    }
}

TEST_F(MenuListsTest, RowMarksShowHowAWindowIsPinned) {
    struct Case {
        const char* line;
        bool checkInAddRemove;
        bool checkInMinSize;
        bool arrowInMinSize;
    };
    constexpr Case Cases[] = {
        {"Nowhere", false, false, false},
        {"Target", true, true, false},
        {"Target\t300\t200", true, false, true},
        {"arg\t0\t200", true, false, true},
    };
    Actor actor;
    static_cast<void>(actor.Create({.title = L"Target", .x = 0, .y = 0}));
    const Program program = StartedProgram();
    for (const Case& item : Cases) {
        ASSERT_TRUE(EditSettings(SettingsText(true, {item.line})));
        HWND submenu = nullptr;
        const auto appears = [&submenu](const Row& row, COLORREF colour, bool expected) {
            return WaitUntil([&] {
                return (CaptureScreen(RowRect(submenu, row)).Count(colour) > 0) == expected;
            });
        };
        ASSERT_NE(OpenMenu(program), nullptr) << item.line;
        submenu = OpenSubmenu(program, Item::AddRemove, Way::Keyboard);
        ASSERT_NE(submenu, nullptr) << item.line;
        const Row toggle = AddRemoveRow(L"Target");
        EXPECT_TRUE(appears(toggle, CheckColour, item.checkInAddRemove)) << item.line;
        EXPECT_TRUE(appears(toggle, ArrowColour, false)) << item.line;
        ASSERT_TRUE(DismissMenu(program)) << item.line;
        ASSERT_NE(OpenMenu(program), nullptr) << item.line;
        submenu = OpenSubmenu(program, Item::AddRemoveMinSize, Way::Keyboard);
        ASSERT_NE(submenu, nullptr) << item.line;
        const Row measure = MinSizeRow(L"Target");
        EXPECT_TRUE(appears(measure, CheckColour, item.checkInMinSize)) << item.line;
        EXPECT_TRUE(appears(measure, ArrowColour, item.arrowInMinSize)) << item.line;
        ASSERT_TRUE(DismissMenu(program)) << item.line;
    }
}

// Whether the item's check mark column holds anything besides background.
bool HasCheckMark(HWND menu, Item item) {
    RECT column = ItemRect(menu, item);
    column.right = column.left + GetSystemMetrics(SM_CXMENUCHECK);
    const Picture picture = CaptureScreen(column);
    return picture.pixels.size() > picture.Count(picture.At(0, 0));
}

TEST_F(MenuListsTest, CheckMarksFollowTheFileAndTheShortcut) {
    const Program program = StartedProgram();
    for (const bool on : {true, false, true}) {
        ASSERT_TRUE(EditSettings(SettingsText(on, {"Nowhere"})));
        if (on) {
            ASSERT_TRUE(WriteFileBytes(StartupShortcut(), "made by another program"));
        } else {
            EmptyStartupFolder();
        }
        const HWND menu = OpenMenu(program);
        ASSERT_NE(menu, nullptr) << on;
        EXPECT_TRUE(WaitUntil([&] { return HasCheckMark(menu, Item::AlwaysOnTop) == on; })) << on;
        EXPECT_TRUE(WaitUntil([&] { return HasCheckMark(menu, Item::StartWithWindows) == on; }))
            << on;
        EXPECT_FALSE(HasCheckMark(menu, Item::ApplyNow)) << on;
        EXPECT_TRUE(DismissMenu(program)) << on;
    }
}

}  // namespace
}  // namespace morvane::test
