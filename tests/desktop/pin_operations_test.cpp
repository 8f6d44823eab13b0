// The commands that change the list, and the list, file and windows afterwards.

#include "pin/pin_operations.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "desktop/engine_fixture.h"
#include "pin/engine.h"
#include "support/test_environment.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

class PinOperationsTest : public EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (!IsSkipped()) {
            WriteSettings("");
        }
    }
};

TEST_F(PinOperationsTest, AddedTitleIsAppendedAndWrittenWithoutAPass) {
    const HWND window = Window(L"Alpha");
    LoadSettings("beta\t10\t20\n");
    AddWindow(L"Alpha");
    EXPECT_EQ(ReadSettings(), WrittenSettings("beta\t10\t20\nAlpha\n"));
    EXPECT_TRUE(Asked(window).empty());
    AddWindow(L"alphabet");
    EXPECT_EQ(ReadSettings(), WrittenSettings("beta\t10\t20\nAlpha\nalphabet\n"));
}

TEST_F(PinOperationsTest, CommandThatChangesNothingNeitherSavesNorRunsAPass) {
    const HWND window = Window(L"entry-7.");
    const struct {
        const char* name;
        std::string lines;
        void (*command)();
    } cases[] = {
        {"empty title", "entry-7\n", [] { AddWindow(L""); }},
        {"known title", "entry-7\n", [] { AddWindow(L"ENTRY-7"); }},
        {"one too many", FullSettings(), [] { AddWindow(L"One more"); }},
        {"one too many with a size", FullSettings(),
         [] { AddWindowWithMinSize(nullptr, 600, 500, L"One more"); }},
        {"entry behind the last", "entry-7\n", [] { RemoveEntry(1); }},
        {"no such entry", "entry-7\n", [] { RemoveEntry(SIZE_MAX); }},
    };
    for (const auto& item : cases) {
        LoadSettings(item.lines);
        item.command();
        EXPECT_EQ(ReadSettings(), item.lines) << item.name;
        EXPECT_TRUE(Asked(window).empty()) << item.name;
    }
}

TEST_F(PinOperationsTest, LongTitleIsCutToThePatternLength) {
    for (const auto& [length, stored] : {std::pair{511U, 511U}, {512U, 512U}, {513U, 512U}}) {
        LoadSettings("");
        AddWindow(std::wstring(length, L'x'));
        AddWindowWithMinSize(nullptr, 10, 20, std::wstring(length, L'y'));
        EXPECT_EQ(ReadSettings(), WrittenSettings(std::string(stored, 'x') + "\n" +
                                                  std::string(stored, 'y') + "\t10\t20\n"))
            << length;
    }
}

TEST_F(PinOperationsTest, HundredthEntryIsAdded) {
    const std::string full = FullSettings();
    LoadSettings(full.substr(0, full.rfind("entry-99")));
    AddWindow(L"entry-99");
    EXPECT_EQ(ReadSettings(), WrittenSettings(full));
}

TEST_F(PinOperationsTest, ToggleAtTheLimitAddsNothingButStillRunsAPass) {
    const HWND listed = Window(L"entry-7.");
    const HWND wanted = Window(L"Wanted");
    LoadSettings(FullSettings());
    ToggleWindow(L"Wanted");
    EXPECT_EQ(Engine().pinList.entries.size(), 100U);
    EXPECT_TRUE(IsTopmost(listed));
    EXPECT_FALSE(IsTopmost(wanted));
}

TEST_F(PinOperationsTest, MinimumSizeGoesToTheEntryThatIdentifiesTheTitle) {
    const HWND window = Window(L"a.txt - Notepad");
    LoadSettings("note\nnotepad\n");
    AddWindowWithMinSize(window, 500, 450, L"a.txt - Notepad");
    EXPECT_EQ(ReadSettings(), WrittenSettings("note\nnotepad\t500\t450\n"));
    EXPECT_EQ(Asked(window), Requests({GrowRequest(100, 100, 500, 450), TopmostRequest}));
    AddWindowWithMinSize(window, 300, 0, L"a.txt - Notepad");
    EXPECT_EQ(ReadSettings(), WrittenSettings("note\nnotepad\t300\t0\n")) << "measured again";
    EXPECT_EQ(WindowSize(window).cx, 500) << "never shrunk";
}

TEST_F(PinOperationsTest, MinimumSizesAreClamped) {
    const struct {
        std::int32_t size;
        const char* stored;
    } cases[] = {{-1, "0"}, {0, "0"}, {1, "1"}, {8192, "8192"}, {8193, "8192"}};
    for (const auto& item : cases) {
        LoadSettings("");
        AddWindowWithMinSize(nullptr, item.size, 7, L"New");
        EXPECT_EQ(ReadSettings(), WrittenSettings(std::string("New\t") + item.stored + "\t7\n"));
        LoadSettings("new\n");
        AddWindowWithMinSize(nullptr, 7, item.size, L"New");
        EXPECT_EQ(ReadSettings(), WrittenSettings(std::string("new\t7\t") + item.stored + "\n"));
    }
}

TEST_F(PinOperationsTest, RemovalReleasesAllAndPinsTheRestAgain) {
    const HWND alpha = Window(L"Alpha");
    const HWND beta = Window(L"Beta");
    const HWND gamma = Window(L"Gamma");
    ApplySettings("alpha\nbeta\ngamma\t5\t6\n");
    for (const HWND window : {alpha, beta, gamma}) {
        Other().ForgetRecords(window);
    }
    RemoveEntry(1);
    EXPECT_EQ(ReadSettings(), WrittenSettings("alpha\ngamma\t5\t6\n"));
    EXPECT_EQ(Asked(alpha), Requests({OrdinaryRequest, TopmostRequest}));
    EXPECT_EQ(Asked(beta), Requests({OrdinaryRequest}));
    EXPECT_EQ(Asked(gamma), Requests({OrdinaryRequest, TopmostRequest}));
    EXPECT_EQ(Other().RequestedOrder({gamma, alpha}), std::vector<HWND>({alpha, gamma}));
}

TEST_F(PinOperationsTest, ToggleAddsAndPinsThenRemovesAndReleases) {
    const HWND window = Window(L"Alpha - Editor");
    ToggleWindow(L"Alpha - Editor");
    EXPECT_EQ(ReadSettings(), WrittenSettings("Alpha - Editor\n"));
    EXPECT_TRUE(IsTopmost(window));
    ToggleWindow(L"ALPHA - EDITOR");
    EXPECT_EQ(ReadSettings(), WrittenSettings(""));
    EXPECT_FALSE(IsTopmost(window));
    EXPECT_TRUE(Engine().pinnedWindows.empty());
}

TEST_F(PinOperationsTest, ToggleRemovesTheShorterPatternThatIdentifiesTheTitle) {
    const HWND window = Window(L"notes.txt - Notepad");
    ApplySettings("other\nnotepad\n");
    ToggleWindow(L"notes.txt - Notepad");
    EXPECT_EQ(ReadSettings(), WrittenSettings("other\n"));
    EXPECT_FALSE(IsTopmost(window));
    ToggleWindow(L"notes.txt - Notepad");
    EXPECT_EQ(ReadSettings(), WrittenSettings("other\nnotes.txt - Notepad\n"));
    EXPECT_TRUE(IsTopmost(window));
}

TEST_F(PinOperationsTest, ToggledTitleThatReadsAsACommentIsGoneAfterThePass) {
    const HWND window = Window(L"#general");
    ToggleWindow(L"#general");
    EXPECT_EQ(ReadSettings(), WrittenSettings("#general\n"));
    EXPECT_TRUE(Engine().pinList.entries.empty());
    EXPECT_FALSE(IsTopmost(window));
}

TEST_F(PinOperationsTest, MasterSwitchReleasesAndPinsAtOnce) {
    const HWND window = Window(L"Alpha");
    ApplySettings("alpha\n");
    SetPinning(false);
    EXPECT_EQ(ReadSettings(), std::string(SettingsHeader) + "@pinning=0\nalpha\n");
    EXPECT_FALSE(IsTopmost(window));
    EXPECT_TRUE(Engine().pinnedWindows.empty());
    SetPinning(false);
    EXPECT_FALSE(IsTopmost(window));
    SetPinning(true);
    EXPECT_EQ(ReadSettings(), WrittenSettings("alpha\n"));
    EXPECT_TRUE(IsTopmost(window));
    EXPECT_EQ(Asked(window), Requests({TopmostRequest, OrdinaryRequest, TopmostRequest}));
}

TEST_F(PinOperationsTest, SavingCreatesAMissingFile) {
    constexpr void (*Operations[])() = {[] { AddWindow(L"Alpha"); }, [] { ToggleWindow(L"Alpha"); },
                                        [] { AddWindowWithMinSize(nullptr, 0, 0, L"Alpha"); }};
    for (void (*const operation)() : Operations) {
        ASSERT_NE(DeleteFileW(SettingsPath().c_str()), FALSE);
        Engine().pinList = PinList{};
        operation();
        EXPECT_EQ(ReadSettings(), WrittenSettings("Alpha\n"));
    }
}

TEST_F(PinOperationsTest, WithoutASettingsPathNothingIsSavedAndThePassForgets) {
    const HWND window = Window(L"Alpha");
    Engine().settingsPath.clear();
    AddWindow(L"Alpha");
    EXPECT_EQ(Engine().pinList.entries.size(), 1U);
    ToggleWindow(L"Beta");
    EXPECT_TRUE(Engine().pinList.entries.empty());
    SetPinning(false);
    EXPECT_FALSE(Engine().pinList.pinning);
    SetPinning(true);
    EXPECT_FALSE(IsTopmost(window));
    EXPECT_EQ(ReadSettings(), "");
}

}  // namespace
}  // namespace morvane::test
