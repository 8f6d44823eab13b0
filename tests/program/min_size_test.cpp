// Windows kept at a minimum size, through the file and through the commands.

#include "program/scene.h"

namespace morvane::test {
namespace {

using MinSizeTest = ProgramTest;

constexpr const wchar_t* Unreadable = L"Could not read this window's size.";

bool HasSize(HWND window, LONG width, LONG height) {
    const SIZE size = WindowSize(window);
    return size.cx == width && size.cy == height;
}

struct SizeCase {
    const char* line;
    int width;
    int height;
    LONG newWidth;
    LONG newHeight;
};

constexpr SizeCase SizeCases[] = {
    {"Target\t0\t600", 800, 500, 800, 600},
    {"Target\t0\t600", 800, 700, 800, 700},
    {"Target\t900\t0", 800, 500, 900, 500},
    {"Target 900 650", 800, 500, 900, 650},
    {"Target 900 650", 1000, 700, 1000, 700},
    {"Target 900 650", 899, 651, 900, 651},
    {"Target   850    450", 800, 500, 850, 500},
    {"Target 0 0", 300, 200, 300, 200},
    {"Target", 300, 200, 300, 200},
    {"Target\t0800\t0", 300, 200, 800, 200},
};

TEST_F(MinSizeTest, WindowGrowsToTheRightAndDownwardsOnly) {
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    for (const SizeCase& item : SizeCases) {
        ASSERT_TRUE(EditSettings("Sentinel\n"));
        ASSERT_TRUE(sentinel.WaitForPass(program));
        actor.Place(target, 100, 100, item.width, item.height);
        ASSERT_TRUE(EditSettings(std::string("Sentinel\n") + item.line + "\n"));
        ASSERT_TRUE(sentinel.WaitForPass(program));
        const RECT rect = WindowRect(target);
        EXPECT_EQ(rect.left, 100) << item.line;
        EXPECT_EQ(rect.top, 100) << item.line;
        EXPECT_EQ(rect.right - rect.left, item.newWidth) << item.line << " of " << item.width;
        EXPECT_EQ(rect.bottom - rect.top, item.newHeight) << item.line << " of " << item.height;
        EXPECT_TRUE(IsTopmost(target)) << item.line;
    }
}

TEST_F(MinSizeTest, WindowMadeSmallerGrowsAgain) {
    ASSERT_TRUE(WriteSettings("Target 500 400\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target", .width = 300, .height = 200});
    const Program program = StartedProgram();
    ASSERT_TRUE(WaitUntil([&] { return HasSize(target, 500, 400); }));
    actor.Place(target, 50, 60, 350, 450);
    EXPECT_TRUE(WaitUntil([&] { return HasSize(target, 500, 450); }));
    EXPECT_EQ(WindowRect(target).left, 50);
    EXPECT_EQ(WindowRect(target).top, 60);
}

TEST_F(MinSizeTest, ReleasedWindowKeepsItsGrownSize) {
    ASSERT_TRUE(WriteSettings("Target 500 400\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target", .width = 300, .height = 200});
    const Program program = StartedProgram();
    ASSERT_TRUE(WaitUntil([&] { return HasSize(target, 500, 400) && IsTopmost(target); }));
    EXPECT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_TRUE(BecomesOrdinary(target));
    EXPECT_TRUE(HasSize(target, 500, 400));
}

TEST_F(MinSizeTest, MinimisedWindowIsPinnedAtOnceAndGrowsWhenRestored) {
    ASSERT_TRUE(WriteSettings("Sentinel\nTarget 500 400\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const HWND target = actor.Create({.title = L"Target", .width = 300, .height = 200});
    actor.Minimise(target);
    actor.ForgetRecords(target);
    const Program program = StartedProgram();
    ASSERT_TRUE(sentinel.WaitForPass(program));
    EXPECT_TRUE(IsTopmost(target));
    EXPECT_NE(IsIconic(target), FALSE);
    for (const PositionRequest& request : actor.Requests(target)) {
        EXPECT_NE(request.flags & SWP_NOSIZE, 0U) << "sized while minimised";
    }
    actor.Restore(target);
    EXPECT_TRUE(WaitUntil([&] { return HasSize(target, 500, 400); }));
    EXPECT_TRUE(IsTopmost(target));
}

// A "(min size)" command uses the windows as last enumerated. A row command without a window
// enumerates them and changes nothing else.
bool EnumerateWindows(const Program& program) {
    return program.SendCommand(TogglePinCommand + 499);
}

bool MeasureRow(const Program& program, const std::wstring& title) {
    return SendRowCommand(program, MinSizeCommand, title);
}

TEST_F(MinSizeTest, CommandRecordsTheWindowsSizeAndSaysSo) {
    const TrayRecorder recorder;
    Actor actor;
    const HWND target = actor.Create({.title = L"Target", .width = 640, .height = 360});
    const Program program = StartedProgram();
    ASSERT_TRUE(EnumerateWindows(program));
    ASSERT_TRUE(MeasureRow(program, L"Target"));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Target\t640\t360"}));
    EXPECT_TRUE(BecomesTopmost(target));
    const TrayCall balloon = WaitForBalloon(recorder);
    EXPECT_EQ(balloon.info, L"Minimum size set to 640 x 360.");
    EXPECT_EQ(balloon.infoTitle, L"Morvane");
    EXPECT_EQ(balloon.infoFlags, static_cast<DWORD>(NIIF_INFO));
    actor.Place(target, 100, 100, 300, 200);
    EXPECT_TRUE(WaitUntil([&] { return HasSize(target, 640, 360); }));
}

TEST_F(MinSizeTest, CommandChangesTheEntryThatIdentifiesTheWindow) {
    ASSERT_TRUE(WriteSettings("Other\nget\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target", .width = 640, .height = 360});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(target));
    ASSERT_TRUE(EnumerateWindows(program));
    ASSERT_TRUE(MeasureRow(program, L"Target"));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Other", "get\t640\t360"}));
}

TEST_F(MinSizeTest, TooLargeASizeIsStoredCappedAndReportedInFull) {
    const TrayRecorder recorder;
    Actor actor;
    const HWND wide =
        actor.Create({.title = L"Wide", .style = WS_POPUP, .width = 9000, .height = 600});
    ASSERT_TRUE(HasSize(wide, 9000, 600));
    const Program program = StartedProgram();
    ASSERT_TRUE(EnumerateWindows(program));
    ASSERT_TRUE(MeasureRow(program, L"Wide"));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Wide\t8192\t600"}));
    EXPECT_EQ(WaitForBalloon(recorder).info, L"Minimum size set to 9000 x 600.");
}

TEST_F(MinSizeTest, CommandUsesTheListAsLastEnumerated) {
    Actor actor;
    const HWND target = actor.Create({.title = L"M", .width = 640, .height = 360});
    const Program program = StartedProgram();
    ASSERT_TRUE(EnumerateWindows(program));
    const int row = RowOfTitle(L"M");
    ASSERT_GE(row, 0);
    static_cast<void>(actor.Create({.title = L"A comes first"}));
    ASSERT_TRUE(program.SendCommand(static_cast<WORD>(MinSizeCommand + row)));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"M\t640\t360"}));
    EXPECT_TRUE(BecomesTopmost(target));
}

TEST_F(MinSizeTest, WindowsWithoutAReadableSizeAreRefused) {
    const TrayRecorder recorder;
    Actor actor;
    const HWND iconic = actor.Create({.title = L"Iconic"});
    const HWND gone = actor.Create({.title = L"Gone"});
    actor.Minimise(iconic);
    const Program program = StartedProgram();
    ASSERT_TRUE(EnumerateWindows(program));
    const int row = RowOfTitle(L"Gone");
    ASSERT_TRUE(MeasureRow(program, L"Iconic"));
    actor.Destroy(gone);
    ASSERT_TRUE(program.SendCommand(static_cast<WORD>(MinSizeCommand + row)));
    // No menu has been opened, so there is no active window either.
    ASSERT_TRUE(program.SendCommand(MinSizeActiveCommand));
    for (std::size_t i = 0; i < 3; ++i) {
        const TrayCall balloon = WaitForBalloon(recorder, i);
        EXPECT_EQ(balloon.info, Unreadable) << i;
        EXPECT_EQ(balloon.infoFlags, static_cast<DWORD>(NIIF_WARNING)) << i;
    }
    EXPECT_EQ(ReadSettings(), SettingsText(true, {}));
}

TEST_F(MinSizeTest, WindowThatLostItsTitleIsRefused) {
    const TrayRecorder recorder;
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    ASSERT_TRUE(EnumerateWindows(program));
    const int row = RowOfTitle(L"Target");
    actor.SetTitle(target, L"");
    ASSERT_TRUE(program.SendCommand(static_cast<WORD>(MinSizeCommand + row)));
    const TrayCall balloon = WaitForBalloon(recorder);
    EXPECT_EQ(balloon.info, L"Could not read this window's title.");
    EXPECT_EQ(balloon.infoFlags, static_cast<DWORD>(NIIF_WARNING));
}

TEST_F(MinSizeTest, FullListTakesNoNewWindowButMeasuresItsOwn) {
    const TrayRecorder recorder;
    std::string lines = "Known\n";
    for (int i = 0; i < 99; ++i) {
        lines += "Nobody " + std::to_string(i) + "\n";
    }
    ASSERT_TRUE(WriteSettings(lines));
    Actor actor;
    static_cast<void>(actor.Create({.title = L"Known", .width = 640, .height = 360}));
    const HWND stranger = actor.Create({.title = L"Stranger"});
    const Program program = StartedProgram();
    ASSERT_TRUE(EnumerateWindows(program));
    ASSERT_TRUE(MeasureRow(program, L"Stranger"));
    const TrayCall warning = WaitForBalloon(recorder);
    EXPECT_EQ(warning.info, L"Can't add more windows (limit reached).");
    EXPECT_EQ(warning.infoFlags, static_cast<DWORD>(NIIF_WARNING));
    EXPECT_EQ(ReadSettings(), lines);
    EXPECT_FALSE(IsTopmost(stranger));
    ASSERT_TRUE(MeasureRow(program, L"Known"));
    EXPECT_EQ(WaitForBalloon(recorder, 1).info, L"Minimum size set to 640 x 360.");
    EXPECT_NE(ReadSettings().value_or("").find("\nKnown\t640\t360\n"), std::string::npos);
}

}  // namespace
}  // namespace morvane::test
