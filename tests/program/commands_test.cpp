// The messages and commands of the control window, sent without the menu.

#include "program/scene.h"

namespace morvane::test {
namespace {

using CommandsTest = ProgramTest;

struct SentMessage {
    UINT message;
    WPARAM wParam;
    LPARAM lParam = 0;
};

constexpr SentMessage UnknownMessages[] = {
    {WM_COMMAND, 0},
    {WM_COMMAND, 1},
    {WM_COMMAND, 2},
    {WM_COMMAND, 1000},
    {WM_COMMAND, 1005},
    {WM_COMMAND, 1007},
    {WM_COMMAND, 1008},
    {WM_COMMAND, 1011},
    {WM_COMMAND, 2499},
    {WM_COMMAND, 3500},
    {WM_COMMAND, 4000},
    {WM_COMMAND, 0xFFFF},
    {WM_TIMER, 0},
    {WM_TIMER, 2},
    {WM_TIMER, 4},
    {WM_TIMER, 500},
    {WM_TIMER, 1001},
    {TrayMessage, 1, 0},
    {TrayMessage, 1, WM_MOUSEMOVE},
    {TrayMessage, 1, WM_LBUTTONDOWN},
    {TrayMessage, 1, WM_RBUTTONDOWN},
    {TrayMessage, 1, WM_LBUTTONDBLCLK},
    {TrayMessage, 1, WM_RBUTTONDBLCLK},
    {TrayMessage, 1, WM_MBUTTONUP},
    {TrayMessage, 1, WM_CONTEXTMENU},
    {TrayMessage, 1, NIN_SELECT},
    {TrayMessage, 1, NIN_BALLOONSHOW},
    {TrayMessage, 1, NIN_BALLOONUSERCLICK},
    // How a newer taskbar convention would encode a release.
    {TrayMessage, 1, MAKELPARAM(WM_LBUTTONUP, 1)},
    {TrayMessage, 1, MAKELPARAM(WM_RBUTTONUP, 1)},
};

TEST_F(CommandsTest, UnknownMessagesAnswerZeroAndDoNothing) {
    const TrayRecorder recorder;
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\n", {sentinel.Window()});
    for (const SentMessage& sent : UnknownMessages) {
        SCOPED_TRACE(testing::Message()
                     << sent.message << ' ' << sent.wParam << ' ' << sent.lParam);
        const ULONGLONG start = GetTickCount64();
        const std::size_t before = sentinel.PassTicks().size();
        for (int round = 0; round < 10; ++round) {
            EXPECT_EQ(Answer(program.ControlWindow(), sent.message, sent.wParam, sent.lParam), 0);
        }
        // The program's own timer keeps running: one pass per period, one for the period already
        // begun, and one that may have been late at the start.
        EXPECT_LE(sentinel.PassTicks().size() - before, (GetTickCount64() - start) / 500 + 2);
        EXPECT_TRUE(VisibleWindowsOfClass(L"#32768").empty());
    }
    EXPECT_TRUE(sentinel.WaitForPass(program));
    EXPECT_TRUE(VisibleWindowsOfClass(L"#32768").empty());
    EXPECT_EQ(recorder.Calls().size(), 1U) << "only the icon's";
    EXPECT_EQ(ReadSettings(), "Sentinel\n");
    EXPECT_FALSE(PathExists(StartupShortcut()));
}

TEST_F(CommandsTest, CommandNumberIsTheLowWordAndCommandsAnswerZero) {
    const TrayRecorder recorder;
    const Program program = StartedProgram();
    for (const WPARAM command : {1001U, 1006U, 1010U, 2999U, 3499U}) {
        EXPECT_EQ(Answer(program.ControlWindow(), WM_COMMAND, command, 0), 0) << command;
    }
    for (const WORD highWord : {WORD{0}, WORD{1}}) {
        EXPECT_EQ(Answer(program.ControlWindow(), WM_COMMAND,
                         MAKEWPARAM(AlwaysOnTopCommand, highWord), 0),
                  0);
        EXPECT_EQ(ReadSettings(), SettingsText(highWord == 1, ""));
    }
}

TEST_F(CommandsTest, RowsBeyondTheListDoNothing) {
    const TrayRecorder recorder;
    static_cast<void>(Window(L"~ the last row"));
    const Program program = StartedProgram();
    const int size = static_cast<int>(RowTitles().size());
    ASSERT_EQ(RowOfTitle(L"~ the last row"), size - 1);
    for (const int row : {size, size + 1, 100, 499}) {
        EXPECT_TRUE(program.SendCommand(static_cast<WORD>(TogglePinCommand + row))) << row;
        EXPECT_TRUE(program.SendCommand(static_cast<WORD>(MinSizeCommand + row))) << row;
    }
    EXPECT_TRUE(Balloons(recorder).empty());
    EXPECT_EQ(ReadSettings(), SettingsText(true, ""));
    EXPECT_TRUE(program.SendCommand(static_cast<WORD>(MinSizeCommand + size - 1)));
    EXPECT_EQ(Balloons(recorder).size(), 1U);
    EXPECT_EQ(ReadSettings(), SettingsText(true, "~ the last row\t400\t300\n"));
    EXPECT_TRUE(program.SendCommand(static_cast<WORD>(TogglePinCommand + size - 1)));
    EXPECT_EQ(ReadSettings(), SettingsText(true, ""));
}

// More windows than there are row commands.
TEST_F(CommandsTest, RowsEndAtTheFiveHundredthWindow) {
    constexpr WORD LastToggle = TogglePinCommand + 499;
    constexpr WORD LastMinSize = MinSizeCommand + 499;
    constexpr WORD BeyondMinSize = MinSizeCommand + 500;
    const TrayRecorder recorder;
    // In batches, so that the other process answers in time on a busy machine. No title contains
    // another.
    for (int part = 10; part < 61; ++part) {
        const std::wstring title = L"Row " + std::to_wstring(part) + L".";
        static_cast<void>(Other().CreateMany(
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
    EXPECT_EQ(ReadSettings(), SettingsText(true, last + "\n"));
    ASSERT_TRUE(program.SendCommand(BeyondMinSize));
    ASSERT_TRUE(program.SendCommand(TogglePinCommand - 1));
    EXPECT_TRUE(Balloons(recorder).empty());
    EXPECT_EQ(ReadSettings(), SettingsText(true, last + "\n"));
    ASSERT_TRUE(program.SendCommand(LastMinSize));
    EXPECT_EQ(Balloons(recorder).size(), 1U);
    EXPECT_EQ(ReadSettings(), SettingsText(true, last + "\t40\t30\n"));
}

}  // namespace
}  // namespace morvane::test
