// The tray icon and its balloons: what the shell is told, and that it accepts them.

#include "ui/tray_icon.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "base/win_shell.h"
#include "desktop/engine_fixture.h"
#include "support/import_patch.h"
#include "support/import_watch.h"
#include "support/test_environment.h"
#include "support/tray.h"
#include "support/tray_recorder.h"
#include "support/window_owner.h"

namespace morvane::test {
namespace {

void Add(const WindowOwner& window) {
    AddTrayIcon(window.get(), GetModuleHandleW(nullptr));
}

TEST(TrayIconTest, BalloonTextsAreCut) {
    struct Case {
        std::size_t length;
        std::size_t title;
        std::size_t text;
    };
    const std::vector<Case> cases = {{0, 0, 0},      {62, 62, 62},   {63, 63, 63},   {64, 63, 64},
                                     {65, 63, 65},   {254, 63, 254}, {255, 63, 255}, {256, 63, 255},
                                     {257, 63, 255}, {2000, 63, 255}};
    TrayRecorder recorder;
    const WindowOwner window = MessageOnlyWindow();
    Add(window);
    for (const Case& item : cases) {
        recorder.Forget();
        ShowBalloon(std::wstring(item.length, L'T'), std::wstring(item.length, L'x'),
                    BalloonKind::BalloonInfo);
        ASSERT_EQ(recorder.Calls().size(), 1U);
        EXPECT_EQ(recorder.Calls()[0].infoTitle, std::wstring(item.title, L'T')) << item.length;
        EXPECT_EQ(recorder.Calls()[0].info, std::wstring(item.text, L'x')) << item.length;
    }
}

using IconRequest = std::pair<HINSTANCE, ULONG_PTR>;

// Replaces the loading of icons: the answer, and what was asked for.
struct IconScene {
    bool hasOwnIcon = true;
    std::vector<IconRequest> asked;
};

IconScene scene;

const auto OwnIcon = reinterpret_cast<HICON>(INT_PTR{0x51});
const auto SystemIcon = reinterpret_cast<HICON>(INT_PTR{0x52});

HICON WINAPI GiveIcon(HINSTANCE instance, LPCWSTR name) {
    scene.asked.emplace_back(instance, reinterpret_cast<ULONG_PTR>(name));
    if (instance == nullptr) {
        return SystemIcon;
    }
    return scene.hasOwnIcon ? OwnIcon : nullptr;
}

// Shows an icon, three balloons of which the first may be refused, and removes the icon.
void ExpectTheWholeRecord(int refusals) {
    struct Case {
        DWORD message;
        UINT flags;
        std::wstring infoTitle;
        std::wstring info;
        DWORD infoFlags;
    };
    const std::vector<Case> cases = {
        {NIM_ADD, 7, L"", L"", 0},
        {NIM_MODIFY, 16, L"First title", L"First text", NIIF_WARNING},
        {NIM_MODIFY, 16, L"Title", L"Text", NIIF_INFO},
        {NIM_MODIFY, 16, L"\x65E5\x672C", L"\x0413\x043E\x0442\x043E\x0432\x043E", NIIF_INFO},
        {NIM_DELETE, 7, L"", L"", 0},
    };
    // Each text copied into a field, and the field's size in units.
    std::vector<std::pair<std::wstring, int>> copies;
    std::vector<std::pair<std::wstring, int>> expectedCopies = {{L"Morvane", 128}};
    scene = {};
    const ImportPatch<decltype(&LoadIconW)> patch("LoadIconW", GiveIcon);
    const ImportWatch<decltype(&lstrcpynW)> watch(
        "lstrcpynW",
        [&copies](LPWSTR /*field*/, LPCWSTR text, int size) { copies.emplace_back(text, size); });
    TrayRecorder recorder;
    const WindowOwner window = MessageOnlyWindow();
    Add(window);
    recorder.RefuseNext(refusals);
    for (const Case& item : cases) {
        if (item.message == NIM_MODIFY) {
            ShowBalloon(item.infoTitle, item.info,
                        item.infoFlags == NIIF_INFO ? BalloonKind::BalloonInfo
                                                    : BalloonKind::BalloonWarning);
            expectedCopies.insert(expectedCopies.end(), {{item.infoTitle, 64}, {item.info, 256}});
        }
    }
    RemoveTrayIcon();
    EXPECT_EQ(copies, expectedCopies);
    const std::vector<TrayCall> calls = recorder.Calls();
    ASSERT_EQ(calls.size(), cases.size());
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(i);
        const TrayCall& call = calls[i];
        EXPECT_EQ(call.message, cases[i].message);
        EXPECT_EQ(call.flags, cases[i].flags);
        EXPECT_EQ(call.infoTitle, cases[i].infoTitle);
        EXPECT_EQ(call.info, cases[i].info);
        EXPECT_EQ(call.infoFlags, cases[i].infoFlags);
        EXPECT_EQ(call.size, sizeof(NOTIFYICONDATAW));
        EXPECT_EQ(call.window, window.get());
        EXPECT_EQ(call.id, 1U);
        EXPECT_EQ(call.callbackMessage, 0x8001U);
        EXPECT_EQ(call.icon, OwnIcon);
        EXPECT_EQ(call.tip, L"Morvane");
        EXPECT_EQ(call.state, 0U);
        EXPECT_EQ(call.stateMask, 0U);
        EXPECT_EQ(call.timeout, 0U);
        EXPECT_EQ(call.item, GUID{});
        EXPECT_EQ(call.balloonIcon, nullptr);
    }
}

TEST(TrayIconTest, BalloonsLeaveTheRecordOfTheIconUnchanged) {
    ExpectTheWholeRecord(0);
}

TEST(TrayIconTest, RefusedBalloonIsNotRetriedAndLeavesNoTrace) {
    ExpectTheWholeRecord(1);
}

TEST(TrayIconTest, MissingOrRefusedIconIsReplacedOnceByTheSystems) {
    struct Case {
        const char* name;
        bool hasOwnIcon;
        int refusals;
        std::vector<IconRequest> asked;
        std::vector<HICON> shown;
    };
    const IconRequest own = {GetModuleHandleW(nullptr), 101};
    const IconRequest system = {nullptr, reinterpret_cast<ULONG_PTR>(IDI_APPLICATION)};
    const std::vector<Case> cases = {
        {"own", true, 0, {own}, {OwnIcon}},
        {"no own", false, 0, {own, system}, {SystemIcon}},
        {"own refused", true, 1, {own, system}, {OwnIcon, SystemIcon}},
        {"all refused", true, 10, {own, system}, {OwnIcon, SystemIcon}},
    };
    const ImportPatch<decltype(&LoadIconW)> patch("LoadIconW", GiveIcon);
    for (const Case& item : cases) {
        scene = {item.hasOwnIcon, {}};
        TrayRecorder recorder;
        recorder.RefuseNext(item.refusals);
        const WindowOwner window = MessageOnlyWindow();
        Add(window);
        recorder.RefuseNext(0);
        std::vector<HICON> shown;
        for (const TrayCall& call : recorder.Calls()) {
            EXPECT_EQ(call.message, static_cast<DWORD>(NIM_ADD)) << item.name;
            EXPECT_EQ(call.flags, 7U) << item.name;
            EXPECT_EQ(call.tip, L"Morvane") << item.name;
            shown.push_back(call.icon);
        }
        EXPECT_EQ(shown, item.shown) << item.name;
        EXPECT_EQ(scene.asked, item.asked) << item.name;
    }
}

decltype(&Shell_NotifyIconW) shell = nullptr;
std::vector<BOOL> answers;

BOOL WINAPI NoteAnswer(DWORD message, PNOTIFYICONDATAW data) {
    if (message == NIM_ADD) {
        EXPECT_NE(data->hIcon, nullptr) << "the system's: this program has none of its own";
    }
    answers.push_back(shell(message, data));
    return answers.back();
}

TEST(TrayIconTest, ShellAcceptsTheIconAndABalloon) {
    MORVANE_REQUIRE_DISPOSABLE_PROFILE();
    ASSERT_TRUE(WaitForTaskbar());
    const ImportPatch<decltype(&Shell_NotifyIconW)> patch("Shell_NotifyIconW", NoteAnswer);
    shell = patch.Original();
    answers.clear();
    const WindowOwner window = MessageOnlyWindow();
    Add(window);
    ShowBalloon(L"Morvane", L"Minimum size set to 1280 x 720.", BalloonKind::BalloonInfo);
    RemoveTrayIcon();
    EXPECT_EQ(answers, (std::vector<BOOL>{TRUE, TRUE, TRUE}));
    EXPECT_FALSE(TrayIconPresent(window.get()));
}

}  // namespace
}  // namespace morvane::test
