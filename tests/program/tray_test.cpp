// The icon in the notification area.

#include "support/tray.h"

#include "program/scene.h"
#include "support/user_input.h"

namespace morvane::test {
namespace {

using TrayTest = ProgramTest;

constexpr POINT Elsewhere{640, 300};

bool MenuIsOpen() {
    return !VisibleWindowsOfClass(L"#32768").empty();
}

TEST_F(TrayTest, IconIsAddedOnceInTheClassicForm) {
    const TrayRecorder recorder;
    const Program program = StartedProgram();
    ASSERT_TRUE(WaitUntil([&] { return !recorder.Calls().empty(); }));
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    const std::vector<TrayCall> calls = recorder.Calls();
    ASSERT_EQ(calls.size(), 1U);
    const TrayCall& call = calls.front();
    EXPECT_EQ(call.message, static_cast<DWORD>(NIM_ADD));
    EXPECT_EQ(call.window, program.ControlWindow());
    EXPECT_EQ(call.id, 1U);
    EXPECT_EQ(call.flags, static_cast<UINT>(NIF_MESSAGE | NIF_ICON | NIF_TIP));
    EXPECT_EQ(call.callbackMessage, TrayMessage);
    EXPECT_EQ(call.tip, L"Morvane");
    EXPECT_GT(call.iconWidth, 0);
    EXPECT_GT(call.iconHeight, 0);
    EXPECT_EQ(call.state, 0U);
    EXPECT_EQ(call.stateMask, 0U);
}

TEST_F(TrayTest, RefusedIconIsTriedOnceMoreAndThenGivenUp) {
    struct Case {
        int refused;
        std::size_t calls;
    };
    for (const Case& item : {Case{0, 1}, Case{1, 2}, Case{2, 2}}) {
        TrayRecorder recorder;
        recorder.RefuseNext(item.refused);
        const Program program = StartedProgram();
        ASSERT_TRUE(WaitUntil([&] { return recorder.Calls().size() >= item.calls; }));
        EXPECT_TRUE(program.SendCommand(ApplyNowCommand));
        EXPECT_TRUE(program.SendCommand(AlwaysOnTopCommand));
        const std::vector<TrayCall> calls = recorder.Calls();
        EXPECT_EQ(calls.size(), item.calls) << item.refused;
        for (const TrayCall& call : calls) {
            EXPECT_EQ(call.message, static_cast<DWORD>(NIM_ADD)) << item.refused;
            EXPECT_EQ(call.tip, L"Morvane") << item.refused;
        }
        EXPECT_EQ(program.ExitByCommand(), 0U) << item.refused;
    }
}

TEST_F(TrayTest, IconIsTheProgramsOwnUntilItIsRefused) {
    TrayRecorder recorder;
    const TrayCall systemIcon = SystemIconCall(recorder);
    ASSERT_NE(systemIcon.pictureHash, 0U);
    recorder.RefuseNext(1);
    const Program program = StartedProgram();
    ASSERT_TRUE(WaitUntil([&] { return recorder.Calls().size() >= 2; }));
    const std::vector<TrayCall> calls = recorder.Calls();
    EXPECT_NE(calls[0].pictureHash, 0U);
    EXPECT_NE(calls[0].pictureHash, systemIcon.pictureHash);
    EXPECT_EQ(calls[1].pictureHash, systemIcon.pictureHash);
    EXPECT_EQ(calls[1].iconWidth, systemIcon.iconWidth);
    ASSERT_TRUE(program.SendCommand(MinSizeActiveCommand));
    EXPECT_EQ(WaitForBalloon(recorder).pictureHash, 0U);
}

TEST_F(TrayTest, BalloonLeavesIconAndTipAlone) {
    const TrayRecorder recorder;
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(MinSizeActiveCommand));
    const TrayCall balloon = WaitForBalloon(recorder);
    EXPECT_EQ(balloon.message, static_cast<DWORD>(NIM_MODIFY));
    EXPECT_EQ(balloon.window, program.ControlWindow());
    EXPECT_EQ(balloon.id, 1U);
    EXPECT_EQ(balloon.flags, static_cast<UINT>(NIF_INFO));
    EXPECT_EQ(balloon.timeout, 0U);
}

TEST_F(TrayTest, HoveringAndPressingOpenNothing) {
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    const POINT icon = WaitForTrayIcon(program.ControlWindow());
    MovePointer({icon.x - 2, icon.y});
    MovePointer(icon);
    EXPECT_TRUE(sentinel.WaitForTimedPass());
    EXPECT_FALSE(MenuIsOpen());
    for (const MouseButton button : {MouseButton::Left, MouseButton::Right}) {
        MovePointer(icon);
        PressButton(button);
        EXPECT_TRUE(sentinel.WaitForTimedPass());
        EXPECT_FALSE(MenuIsOpen());
        MovePointer(Elsewhere);
        ReleaseButton(button);
        EXPECT_TRUE(sentinel.WaitForTimedPass());
        EXPECT_FALSE(MenuIsOpen());
    }
}

TEST_F(TrayTest, OtherNotificationsAnswerZeroAndOpenNothing) {
    ASSERT_TRUE(WriteSettings("Sentinel\n"));
    Actor actor;
    const Sentinel sentinel(actor);
    const Program program = StartedProgram();
    constexpr LPARAM Notifications[] = {
        0,
        WM_MOUSEMOVE,
        WM_LBUTTONDOWN,
        WM_RBUTTONDOWN,
        WM_LBUTTONDBLCLK,
        WM_RBUTTONDBLCLK,
        WM_MBUTTONUP,
        WM_CONTEXTMENU,
        NIN_SELECT,
        NIN_BALLOONSHOW,
        NIN_BALLOONUSERCLICK,
        // How a newer taskbar convention would encode a release.
        MAKELPARAM(WM_LBUTTONUP, 1),
        MAKELPARAM(WM_RBUTTONUP, 1),
    };
    for (const LPARAM notification : Notifications) {
        EXPECT_EQ(Answer(program.ControlWindow(), TrayMessage, 1, notification), 0) << notification;
        EXPECT_FALSE(MenuIsOpen()) << notification;
    }
    EXPECT_TRUE(sentinel.WaitForPass(program));
    EXPECT_FALSE(MenuIsOpen());
}

}  // namespace
}  // namespace morvane::test
