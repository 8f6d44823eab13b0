// The menu's commands, sent without the menu.

#include "program/scene.h"

namespace morvane::test {
namespace {

using CommandsTest = ProgramTest;

TEST_F(CommandsTest, UnknownIdentifiersDoNothing) {
    const TrayRecorder recorder;
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    ASSERT_TRUE(sentinel.WaitForPin());
    const std::size_t calls = recorder.Calls().size();
    for (const WPARAM command :
         {0U, 1U, 2U, 1000U, 1005U, 1007U, 1008U, 1011U, 2499U, 3500U, 4000U, 0xFFFFU}) {
        EXPECT_EQ(Answer(program.ControlWindow(), WM_COMMAND, command, 0), 0) << command;
    }
    EXPECT_TRUE(sentinel.WaitForPass(program));
    EXPECT_TRUE(program.IsRunning());
    EXPECT_EQ(recorder.Calls().size(), calls);
    EXPECT_EQ(ReadSettings(), "Sentinel\n");
    EXPECT_FALSE(PathExists(StartupShortcut()));
}

TEST_F(CommandsTest, KnownIdentifiersAnswerZero) {
    const TrayRecorder recorder;
    const Program program = StartedProgram();
    for (const WPARAM command : {1001U, 1002U, 1006U, 1010U, 2999U, 3499U}) {
        EXPECT_EQ(Answer(program.ControlWindow(), WM_COMMAND, command, 0), 0) << command;
    }
}

TEST_F(CommandsTest, UnknownTimersRunNoPass) {
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    ASSERT_TRUE(sentinel.WaitForTimedPass());
    const HWND control = program.ControlWindow();
    const ULONGLONG start = GetTickCount64();
    const std::size_t before = sentinel.PassTicks().size();
    for (int round = 0; round < 10; ++round) {
        for (const WPARAM timer : {0U, 2U, 4U, 500U, 1001U}) {
            EXPECT_EQ(Answer(control, WM_TIMER, timer, 0), 0) << timer;
        }
    }
    const std::size_t passes = sentinel.PassTicks().size() - before;
    // The program's own timer keeps running: one pass per period, one for the period already begun,
    // and one that may have been late at the start.
    EXPECT_LE(passes, (GetTickCount64() - start) / 500 + 2);
    EXPECT_TRUE(sentinel.WaitForTimedPass());
}

TEST_F(CommandsTest, AlwaysOnTopTurnsPinningOffAndOnAndSavesIt) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(target));
    EXPECT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(false, {"Target"}));
    EXPECT_TRUE(BecomesOrdinary(target));
    EXPECT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Target"}));
    EXPECT_TRUE(BecomesTopmost(target));
}

TEST_F(CommandsTest, SwitchedOffProgramLeavesWindowsAlone) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(target));
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    ASSERT_TRUE(BecomesOrdinary(target));
    actor.ForgetRecords(target);
    // From here on it is the user's own choice.
    actor.SetTopmost(target, true);
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_TRUE(BecomesTopmost(target));
    EXPECT_EQ(actor.Requests(target).size(), 1U);
}

TEST_F(CommandsTest, ApplyNowAppliesTheFileAtOnce) {
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    // The timer may run the pass by chance, but not every time right after another pass.
    for (int round = 0; round < 6; ++round) {
        const std::string title = "Target " + std::to_string(round);
        const HWND target = actor.Create({.title = std::wstring(title.begin(), title.end())});
        const std::size_t before = sentinel.PassTicks().size();
        ASSERT_TRUE(WaitUntil([&] { return sentinel.PassTicks().size() > before; }));
        ASSERT_TRUE(EditSettings("Sentinel\n" + title + "\n"));
        ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
        EXPECT_TRUE(IsTopmost(target)) << round;
    }
}

TEST_F(CommandsTest, RowCommandAddsAndRemovesTheWindow) {
    Actor actor;
    const HWND alpha = actor.Create({.title = L"alpha"});
    const HWND beta = actor.Create({.title = L"Beta"});
    ASSERT_GT(RowOfTitle(L"alpha"), RowOfTitle(L"Beta"));
    const Program program = StartedProgram();
    const auto toggle = [&program](const wchar_t* title) {
        return SendRowCommand(program, TogglePinCommand, title);
    };
    ASSERT_TRUE(toggle(L"alpha"));
    EXPECT_TRUE(BecomesTopmost(alpha));
    EXPECT_TRUE(BecomesOrdinary(beta));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"alpha"}));
    ASSERT_TRUE(toggle(L"Beta"));
    EXPECT_TRUE(BecomesTopmost(beta));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"alpha", "Beta"}));
    ASSERT_TRUE(toggle(L"alpha"));
    EXPECT_TRUE(BecomesOrdinary(alpha));
    EXPECT_TRUE(BecomesTopmost(beta));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Beta"}));
}

TEST_F(CommandsTest, RowCommandRemovesTheShorterPatternAndThenAddsTheTitle) {
    ASSERT_TRUE(WriteSettings("notes\n"));
    Actor actor;
    const HWND window = actor.Create({.title = L"Notes.txt - Editor"});
    const Program program = StartedProgram();
    ASSERT_TRUE(BecomesTopmost(window));
    const int row = RowOfTitle(L"Notes.txt - Editor");
    ASSERT_TRUE(program.SendCommand(static_cast<WORD>(TogglePinCommand + row)));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {}));
    EXPECT_TRUE(BecomesOrdinary(window));
    ASSERT_TRUE(program.SendCommand(static_cast<WORD>(TogglePinCommand + row)));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"Notes.txt - Editor"}));
    EXPECT_TRUE(BecomesTopmost(window));
}

TEST_F(CommandsTest, RowCommandUsesTheCurrentWindows) {
    Actor actor;
    const HWND first = actor.Create({.title = L"M"});
    const Program program = StartedProgram();
    const int row = RowOfTitle(L"M");
    const HWND before = actor.Create({.title = L"A comes first"});
    ASSERT_EQ(RowOfTitle(L"A comes first"), row);
    ASSERT_TRUE(program.SendCommand(static_cast<WORD>(TogglePinCommand + row)));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"A comes first"}));
    EXPECT_TRUE(BecomesTopmost(before));
    EXPECT_TRUE(BecomesOrdinary(first));
}

TEST_F(CommandsTest, RowsBeyondTheListDoNothing) {
    const TrayRecorder recorder;
    Actor actor;
    static_cast<void>(actor.Create({.title = L"~ the last row"}));
    const Program program = StartedProgram();
    const int size = static_cast<int>(RowTitles().size());
    ASSERT_EQ(RowOfTitle(L"~ the last row"), size - 1);
    for (const int row : {size, size + 1, 100, 499}) {
        EXPECT_TRUE(program.SendCommand(static_cast<WORD>(TogglePinCommand + row))) << row;
        EXPECT_TRUE(program.SendCommand(static_cast<WORD>(MinSizeCommand + row))) << row;
    }
    EXPECT_TRUE(Balloons(recorder).empty());
    EXPECT_EQ(ReadSettings(), SettingsText(true, {}));
    EXPECT_TRUE(program.SendCommand(static_cast<WORD>(MinSizeCommand + size - 1)));
    EXPECT_EQ(Balloons(recorder).size(), 1U);
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"~ the last row\t400\t300"}));
    EXPECT_TRUE(program.SendCommand(static_cast<WORD>(TogglePinCommand + size - 1)));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {}));
}

// More windows than there are row commands.
TEST_F(CommandsTest, RowsEndAtTheFiveHundredthWindow) {
    constexpr WORD LastToggle = TogglePinCommand + 499;
    constexpr WORD LastMinSize = MinSizeCommand + 499;
    constexpr WORD BeyondMinSize = MinSizeCommand + 500;
    const TrayRecorder recorder;
    Actor actor;
    // In batches, so that the other process answers in time on a busy machine. No title contains
    // another.
    for (int part = 10; part < 61; ++part) {
        const std::wstring title = L"Row " + std::to_wstring(part) + L".";
        static_cast<void>(actor.CreateMany(
            10, {.title = title, .style = WS_POPUP, .x = 20, .width = 40, .height = 30}));
    }
    const std::vector<std::wstring> titles = RowTitles();
    ASSERT_GT(titles.size(), 501U);
    const std::string last(titles[499].begin(), titles[499].end());
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(LastMinSize));
    EXPECT_TRUE(Balloons(recorder).empty()) << "nothing enumerated yet";
    // Enumerates the windows and adds the row.
    ASSERT_TRUE(program.SendCommand(LastToggle));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {last}));
    ASSERT_TRUE(program.SendCommand(BeyondMinSize));
    ASSERT_TRUE(program.SendCommand(TogglePinCommand - 1));
    EXPECT_TRUE(Balloons(recorder).empty());
    EXPECT_EQ(ReadSettings(), SettingsText(true, {last}));
    ASSERT_TRUE(program.SendCommand(LastMinSize));
    EXPECT_EQ(Balloons(recorder).size(), 1U);
    EXPECT_EQ(ReadSettings(), SettingsText(true, {last + "\t40\t30"}));
}

TEST_F(CommandsTest, CommandNumberIsTheLowWord) {
    const Program program = StartedProgram();
    EXPECT_EQ(Answer(program.ControlWindow(), WM_COMMAND, MAKEWPARAM(AlwaysOnTopCommand, 1), 0), 0);
    EXPECT_EQ(ReadSettings(), SettingsText(false, {}));
}

TEST_F(CommandsTest, FullListAddsNothing) {
    std::string lines;
    for (int i = 0; i < 100; ++i) {
        lines += "Nobody " + std::to_string(i) + "\n";
    }
    ASSERT_TRUE(WriteSettings(lines));
    Actor actor;
    const HWND window = actor.Create({.title = L"One too many"});
    const Program program = StartedProgram();
    ASSERT_TRUE(SendRowCommand(program, TogglePinCommand, L"One too many"));
    EXPECT_EQ(ReadSettings(), lines);
    EXPECT_TRUE(BecomesOrdinary(window));
}

TEST_F(CommandsTest, CommandAfterTheFileWasDeletedWritesItAgain) {
    const Program program = StartedProgram();
    ASSERT_NE(DeleteFileW(SettingsPath().c_str()), FALSE);
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(false, {}));
}

}  // namespace
}  // namespace morvane::test
