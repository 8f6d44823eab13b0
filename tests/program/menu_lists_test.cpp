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

// An invisible foreground window: while it exists, no window counts as active. In a session where
// no window has ever been in front, Wine's desktop is, and that counts.
WindowOwner InvisibleWindowInFront() {
    WindowOwner window = MessageOnlyWindow();
    SetForegroundWindow(window.get());
    EXPECT_TRUE(WaitUntil([&window] { return GetForegroundWindow() == window.get(); }));
    return window;
}

// Whether the menus are still open once all clicks so far have taken effect. Keys come after them:
// only an open submenu is left by Escape and opened again by the right arrow.
bool AnswerTheKeys(const Program& program, HWND menu) {
    TapKey(VK_ESCAPE);
    const bool isLeft = WaitUntil([&] { return MenuWindows(program) == std::vector<HWND>{menu}; });
    TapKey(VK_RIGHT);
    return isLeft && WaitUntil([&] { return MenuWindows(program).size() == 2; });
}

TEST_F(MenuListsTest, PlaceholdersChooseNothing) {
    const TrayRecorder recorder;
    const WindowOwner front = InvisibleWindowInFront();
    const Program program = StartedProgram("Nowhere\n");
    ASSERT_EQ(RowTitles(), std::vector<std::wstring>{});
    for (const Row& row : {NoWindowsToAdd, NoActiveWindow, NoWindowsToMeasure}) {
        SCOPED_TRACE(testing::Message()
                     << "submenu " << static_cast<int>(row.submenu) << ", row " << row.place);
        const HWND menu = OpenMenu(program);
        ASSERT_NE(menu, nullptr);
        const HWND submenu = OpenSubmenu(program, row.submenu, Way::Mouse);
        ASSERT_NE(submenu, nullptr);
        Click(CentreOf(RowRect(submenu, row)), MouseButton::Left);
        EXPECT_TRUE(AnswerTheKeys(program, menu)) << "after the click";
        EXPECT_TRUE(DismissMenu(program));
        ASSERT_NE(OpenMenu(program), nullptr);
        ASSERT_NE(OpenSubmenu(program, row.submenu, Way::Keyboard), nullptr);
        SelectRow(row);
        TapKey(VK_RETURN);
        // Return may close the menu over a grayed item or not, but must choose nothing. An Escape
        // for a menu that is about to close would reach the next one.
        EXPECT_TRUE(MenuCloses(program) || DismissMenu(program));
    }
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_EQ(ReadSettings(), "Nowhere\n");
    // Only the icon's own call, no balloon.
    ASSERT_EQ(recorder.Calls().size(), 1U) << testing::PrintToString(recorder.Calls().back().info);
}

TEST_F(MenuListsTest, AddRemoveChoiceUsesTheRemainingWindows) {
    const HWND alpha = Window(L"Alpha");
    const HWND beta = Window(L"Beta");
    const HWND gamma = Window(L"Gamma");
    const Program program = StartedProgram("Nowhere\n");
    ASSERT_NE(OpenMenu(program), nullptr);
    const Row row = AddRemoveRow(L"Beta");
    Other().Destroy(alpha);
    ASSERT_TRUE(Choose(program, row, Way::Keyboard));
    EXPECT_TRUE(FileBecomes(SettingsText(true, "Nowhere\nGamma\n")));
    EXPECT_TRUE(BecomesTopmost(gamma));
    EXPECT_FALSE(IsTopmost(beta));
}

TEST_F(MenuListsTest, MinSizeChoiceKeepsTheWindowOfItsRowAndWarnsIfItIsClosed) {
    const TrayRecorder recorder;
    const HWND alpha = Window(L"Alpha");
    const HWND beta = Window(L"Beta", 410, 310);
    const HWND gamma = Window(L"Gamma");
    const Program program = StartedProgram("Nowhere\n");
    const std::string saved = SettingsText(true, "Nowhere\nBeta\t410\t310\n");
    const auto chooseWhileItCloses = [&](const wchar_t* title, HWND closed) {
        ASSERT_NE(OpenMenu(program), nullptr);
        const Row row = MinSizeRow(title);
        Other().Destroy(closed);
        ASSERT_TRUE(Choose(program, row, Way::Keyboard));
    };
    chooseWhileItCloses(L"Beta", alpha);
    ExpectBalloon(recorder, L"Minimum size set to 410 x 310.");
    EXPECT_EQ(ReadSettings(), saved);
    EXPECT_TRUE(BecomesTopmost(beta));
    chooseWhileItCloses(L"Gamma", gamma);
    ExpectBalloon(recorder, L"Could not read this window's size.", NIIF_WARNING, 1);
    EXPECT_EQ(ReadSettings(), saved);
}

// A minimised window's row is missing from one list and present in the other.
TEST_F(MenuListsTest, RowsBelowAMinimisedWindowKeepTheirMeaning) {
    const TrayRecorder recorder;
    const HWND alpha = Window(L"Alpha");
    static_cast<void>(Window(L"Beta", 410, 310));
    Other().Minimise(alpha);
    const Program program = StartedProgram("Nowhere\n");
    ASSERT_TRUE(OpenAndChoose(program, {Item::AddRemoveMinSize, 1, 2}, Way::Mouse));
    ExpectBalloon(recorder, L"Minimum size set to 410 x 310.");
    ASSERT_TRUE(OpenAndChoose(program, AddRemoveRow(L"Alpha"), Way::Mouse));
    EXPECT_TRUE(FileBecomes(SettingsText(true, "Nowhere\nBeta\t410\t310\nAlpha\n")));
    EXPECT_TRUE(BecomesTopmost(alpha));
}

// Whether there is anything besides background.
bool IsDrawn(const Picture& picture) {
    return picture.pixels.size() > picture.Count(picture.At(0, 0));
}

TEST_F(MenuListsTest, RowMarksShowHowAWindowIsPinned) {
    struct Case {
        const char* line;
        bool checkInAddRemove;
        bool checkInMinSize;
        bool arrowInMinSize;
    };
    constexpr Case Cases[] = {
        {"Nowhere\n", false, false, false},
        {"Target\n", true, true, false},
        {"Target\t300\t200\n", true, false, true},
        {"arg\t0\t200\n", true, false, true},
    };
    static_cast<void>(Other().Create({.title = L"Target", .x = 0, .y = 0}));
    const Program program = StartedProgram();
    const auto expectMarks = [&program](const Row& row, bool check, bool arrow) {
        ASSERT_NE(OpenMenu(program), nullptr);
        const HWND submenu = OpenSubmenu(program, row.submenu, Way::Keyboard);
        ASSERT_NE(submenu, nullptr);
        EXPECT_TRUE(WaitUntil([&] {
            const Picture picture = CaptureScreen(RowRect(submenu, row));
            return IsDrawn(picture) && (picture.Count(CheckColour) > 0) == check &&
                   (picture.Count(ArrowColour) > 0) == arrow;
        })) << (row.submenu == Item::AddRemove ? "Add / Remove" : "min size");
        ASSERT_TRUE(DismissMenu(program));
    };
    for (const Case& item : Cases) {
        SCOPED_TRACE(item.line);
        WriteSettings(item.line);
        expectMarks(AddRemoveRow(L"Target"), item.checkInAddRemove, false);
        expectMarks(MinSizeRow(L"Target"), item.checkInMinSize, item.arrowInMinSize);
    }
}

bool HasCheckMark(HWND menu, Item item) {
    RECT column = ItemRect(menu, item);
    column.right = column.left + GetSystemMetrics(SM_CXMENUCHECK);
    return IsDrawn(CaptureScreen(column));
}

TEST_F(MenuListsTest, CheckMarksFollowTheFileAndTheShortcut) {
    const Program program = StartedProgram();
    ASSERT_TRUE(WriteFileBytes(StartupShortcut(), "made by another program"));
    // The lower mark is there in both: it shows that the upper ones have been drawn.
    for (const bool pinning : {true, false}) {
        SCOPED_TRACE(testing::Message() << "pinning " << pinning);
        WriteSettings(SettingsText(pinning, "Nowhere\n"));
        const HWND menu = OpenMenu(program);
        ASSERT_NE(menu, nullptr);
        EXPECT_TRUE(WaitUntil([&] {
            return HasCheckMark(menu, Item::AlwaysOnTop) == pinning &&
                   HasCheckMark(menu, Item::StartWithWindows);
        }));
        EXPECT_FALSE(HasCheckMark(menu, Item::ApplyNow));
        EXPECT_TRUE(DismissMenu(program));
    }
}

}  // namespace
}  // namespace morvane::test
