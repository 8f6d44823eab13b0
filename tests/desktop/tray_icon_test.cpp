// The tray icon and its balloons: what the shell is told, and that it accepts them.

#include "ui/tray_icon.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "base/win_shell.h"
#include "desktop/engine_fixture.h"
#include "support/import_patch.h"
#include "support/tray.h"
#include "support/tray_recorder.h"
#include "support/window_owner.h"

namespace morvane::test {
namespace {

// Provides a window for the icon; the destructor removes the icon.
class IconOwner {
public:
    IconOwner() = default;
    IconOwner(const IconOwner&) = delete;
    IconOwner& operator=(const IconOwner&) = delete;
    IconOwner(IconOwner&&) = delete;
    IconOwner& operator=(IconOwner&&) = delete;
    ~IconOwner() { RemoveTrayIcon(); }
    [[nodiscard]] HWND Window() const { return window_.get(); }
    void Add() const { AddTrayIcon(Window(), GetModuleHandleW(nullptr)); }

private:
    WindowOwner window_ = MessageOnlyWindow();
};

void ExpectAddition(const TrayCall& call, HWND window) {
    EXPECT_EQ(call.message, static_cast<DWORD>(NIM_ADD));
    EXPECT_EQ(call.window, window);
    EXPECT_EQ(call.id, 1U);
    EXPECT_EQ(call.flags, 7U);
    EXPECT_EQ(call.callbackMessage, 0x8001U);
    EXPECT_EQ(call.tip, L"Morvane");
    EXPECT_EQ(call.state, 0U);
    EXPECT_EQ(call.stateMask, 0U);
    EXPECT_EQ(call.info, L"");
    EXPECT_EQ(call.timeout, 0U);
    EXPECT_EQ(call.infoTitle, L"");
    EXPECT_EQ(call.infoFlags, 0U);
    // This program has no icon of its own, so the system's is used.
    EXPECT_GT(call.iconWidth, 0);
    EXPECT_GT(call.iconHeight, 0);
}

TEST(TrayIconTest, IconIsAddedWithTheProgramsNameAndNothingElse) {
    const TrayRecorder recorder;
    const IconOwner owner;
    owner.Add();
    const std::vector<TrayCall> calls = recorder.Calls();
    ASSERT_EQ(calls.size(), 1U);
    ExpectAddition(calls[0], owner.Window());
}

TEST(TrayIconTest, RefusedIconIsRetriedOnce) {
    TrayRecorder recorder;
    const IconOwner owner;
    recorder.RefuseNext(1);
    owner.Add();
    ASSERT_EQ(recorder.Calls().size(), 2U);
    ExpectAddition(recorder.Calls()[0], owner.Window());
    ExpectAddition(recorder.Calls()[1], owner.Window());
    recorder.Forget();
    recorder.RefuseNext(10);
    owner.Add();
    EXPECT_EQ(recorder.Calls().size(), 2U);
    recorder.RefuseNext(0);
}

TEST(TrayIconTest, IconIsRemovedAsItWasAdded) {
    TrayRecorder recorder;
    const IconOwner owner;
    owner.Add();
    recorder.Forget();
    RemoveTrayIcon();
    ASSERT_EQ(recorder.Calls().size(), 1U);
    EXPECT_EQ(recorder.Calls()[0].message, static_cast<DWORD>(NIM_DELETE));
    EXPECT_EQ(recorder.Calls()[0].window, owner.Window());
    EXPECT_EQ(recorder.Calls()[0].id, 1U);
}

TEST(TrayIconTest, BalloonCarriesOnlyItsTextsAndKind) {
    struct Case {
        const char* name;
        std::wstring title;
        std::wstring text;
        BalloonKind kind;
        DWORD flags;
    };
    const std::vector<Case> cases = {
        {"information", L"Morvane", L"Done.", BalloonKind::BalloonInfo, NIIF_INFO},
        {"warning", L"Morvane", L"Failed.", BalloonKind::BalloonWarning, NIIF_WARNING},
        {"other scripts", L"\x65E5\x672C", L"\x0413\x043E\x0442\x043E\x0432\x043E",
         BalloonKind::BalloonInfo, NIIF_INFO},
    };
    TrayRecorder recorder;
    const IconOwner owner;
    owner.Add();
    for (const Case& item : cases) {
        SCOPED_TRACE(item.name);
        recorder.Forget();
        ShowBalloon(item.title, item.text, item.kind);
        ASSERT_EQ(recorder.Calls().size(), 1U);
        const TrayCall call = recorder.Calls()[0];
        EXPECT_EQ(call.message, static_cast<DWORD>(NIM_MODIFY));
        EXPECT_EQ(call.window, owner.Window());
        EXPECT_EQ(call.id, 1U);
        EXPECT_EQ(call.flags, 16U);
        EXPECT_EQ(call.infoTitle, item.title);
        EXPECT_EQ(call.info, item.text);
        EXPECT_EQ(call.infoFlags, item.flags);
        EXPECT_EQ(call.timeout, 0U);
    }
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
    const IconOwner owner;
    owner.Add();
    for (const Case& item : cases) {
        recorder.Forget();
        ShowBalloon(std::wstring(item.length, L'T'), std::wstring(item.length, L'x'),
                    BalloonKind::BalloonInfo);
        ASSERT_EQ(recorder.Calls().size(), 1U);
        EXPECT_EQ(recorder.Calls()[0].infoTitle, std::wstring(item.title, L'T')) << item.length;
        EXPECT_EQ(recorder.Calls()[0].info, std::wstring(item.text, L'x')) << item.length;
    }
}

// The text copied into a field, and the field's size in units.
using Copy = std::pair<std::wstring, int>;
std::vector<Copy> copies;
decltype(&lstrcpynW) originalCopy = nullptr;

LPWSTR WINAPI RecordCopy(LPWSTR field, LPCWSTR text, int size) {
    copies.emplace_back(text, size);
    return originalCopy(field, text, size);
}

TEST(TrayIconTest, TextsFillTheirFieldsToTheEnd) {
    const TrayRecorder recorder;
    const IconOwner owner;
    const ImportPatch<decltype(&lstrcpynW)> patch("lstrcpynW", RecordCopy);
    originalCopy = patch.Original();
    copies.clear();
    owner.Add();
    EXPECT_EQ(copies, std::vector<Copy>({{L"Morvane", 128}}));
    copies.clear();
    ShowBalloon(L"Title", L"Text", BalloonKind::BalloonInfo);
    EXPECT_EQ(copies, std::vector<Copy>({{L"Title", 64}, {L"Text", 256}}));
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

TEST(TrayIconTest, BalloonsLeaveTheRecordOfTheIconUnchanged) {
    scene = {};
    const ImportPatch<decltype(&LoadIconW)> patch("LoadIconW", GiveIcon);
    const TrayRecorder recorder;
    const IconOwner owner;
    owner.Add();
    ShowBalloon(L"First title", L"First text", BalloonKind::BalloonWarning);
    ShowBalloon(L"Title", L"Text", BalloonKind::BalloonInfo);
    RemoveTrayIcon();
    struct Case {
        DWORD message;
        UINT flags;
        const wchar_t* infoTitle;
        const wchar_t* info;
        DWORD infoFlags;
    };
    const std::vector<Case> cases = {
        {NIM_ADD, 7, L"", L"", 0},
        {NIM_MODIFY, 16, L"First title", L"First text", 2},
        {NIM_MODIFY, 16, L"Title", L"Text", 1},
        {NIM_DELETE, 7, L"", L"", 0},
    };
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
        EXPECT_EQ(call.window, owner.Window());
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

TEST(TrayIconTest, IconIsTheProgramsOwnOrElseTheSystems) {
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
    };
    const ImportPatch<decltype(&LoadIconW)> patch("LoadIconW", GiveIcon);
    for (const Case& item : cases) {
        scene = {item.hasOwnIcon, {}};
        TrayRecorder recorder;
        recorder.RefuseNext(item.refusals);
        const IconOwner owner;
        owner.Add();
        std::vector<HICON> shown;
        for (const TrayCall& call : recorder.Calls()) {
            shown.push_back(call.icon);
        }
        EXPECT_EQ(shown, item.shown) << item.name;
        EXPECT_EQ(scene.asked, item.asked) << item.name;
    }
}

TEST(TrayIconTest, RefusedBalloonIsNotRetriedAndLeavesNoTrace) {
    TrayRecorder recorder;
    const IconOwner owner;
    owner.Add();
    recorder.Forget();
    recorder.RefuseNext(1);
    ShowBalloon(L"Title", L"Text", BalloonKind::BalloonWarning);
    EXPECT_EQ(recorder.Calls().size(), 1U);
    recorder.Forget();
    owner.Add();
    ASSERT_EQ(recorder.Calls().size(), 1U);
    ExpectAddition(recorder.Calls()[0], owner.Window());
}

decltype(&Shell_NotifyIconW) shell = nullptr;
std::vector<BOOL> answers;

BOOL WINAPI NoteAnswer(DWORD message, PNOTIFYICONDATAW data) {
    answers.push_back(shell(message, data));
    return answers.back();
}

TEST(TrayIconTest, ShellAcceptsTheIconAndABalloon) {
    ASSERT_TRUE(WaitForTaskbar());
    const ImportPatch<decltype(&Shell_NotifyIconW)> patch("Shell_NotifyIconW", NoteAnswer);
    shell = patch.Original();
    answers.clear();
    const IconOwner owner;
    owner.Add();
    ShowBalloon(L"Morvane", L"Minimum size set to 1280 x 720.", BalloonKind::BalloonInfo);
    RemoveTrayIcon();
    EXPECT_EQ(answers, (std::vector<BOOL>{TRUE, TRUE, TRUE}));
    EXPECT_FALSE(TrayIconPresent(owner.Window()));
}

}  // namespace
}  // namespace morvane::test
