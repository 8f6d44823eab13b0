// The platform calls of a pass, which queries exactly what the rules need, every time, and those
// of a save.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "cost/call_watch.h"
#include "desktop/engine_fixture.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "pin/settings_sync.h"
#include "support/import_patch.h"
#include "support/test_environment.h"

namespace morvane::test {
namespace {

// Windows of other programs come and go: a pass sees only these, on any desktop.
std::vector<HWND> windowsOfTheDesktop;

BOOL WINAPI EnumerateThem(WNDENUMPROC callback, LPARAM value) {
    for (const HWND window : windowsOfTheDesktop) {
        if (callback(window, value) == FALSE) {
            return FALSE;
        }
    }
    return TRUE;
}

class PlatformCallsTest : public EngineTest {
protected:
    ~PlatformCallsTest() override { windowsOfTheDesktop.clear(); }

    // Expects these calls for each such window of the actor: in the pass that pins it and in later
    // ones.
    void ExpectForEach(const WindowSpec& spec, const CallCounts& first, const CallCounts& later) {
        constexpr int Windows = 3;
        const CallCounts before = CountCalls(ApplyAll);
        for (int count = 0; count < Windows; ++count) {
            windowsOfTheDesktop.push_back(Other().Create(spec));
        }
        EXPECT_EQ(Added(CountCalls(ApplyAll), before), Times(first, Windows));
        EXPECT_EQ(Added(CountCalls(ApplyAll), before), Times(later, Windows));
        for (const HWND window : windowsOfTheDesktop) {
            Other().Destroy(window);
        }
        windowsOfTheDesktop.clear();
        EXPECT_EQ(CountCalls(PruneRemembered), OfDead(first, Windows));
        EXPECT_EQ(CountCalls(ApplyAll), before);
    }

    [[nodiscard]] static CallCounts Times(CallCounts counts, int factor) {
        for (auto& [name, count] : counts) {
            count *= factor;
        }
        return counts;
    }

private:
    ImportPatch<decltype(&EnumWindows)> patch_{"EnumWindows", EnumerateThem};

    // A pinned window that is gone is checked once more and then forgotten.
    [[nodiscard]] static CallCounts OfDead(const CallCounts& first, int windows) {
        return first.contains("SetWindowPos") ? CallCounts{{"IsWindow", windows}} : CallCounts{};
    }
};

constexpr DWORD Popup = WS_POPUP | WS_CAPTION;

// A file is read in parts of this size; one more read finds the end.
CallCounts FileCalls(std::size_t size) {
    constexpr std::size_t PartSize = 0x4000;
    const auto parts = static_cast<int>((size + PartSize - 1) / PartSize);
    return {{"CreateFileW", 1}, {"ReadFile", parts + 1}, {"CloseHandle", 1}};
}

constexpr std::size_t SmallFile = 20;

TEST_F(PlatformCallsTest, AWindowIsQueriedOnlyUntilTheFirstRefusal) {
    const CallCounts hidden = {{"IsWindowVisible", 1}};
    const CallCounts owned = {{"IsWindowVisible", 1}, {"GetWindow", 1}};
    const CallCounts ours = {{"IsWindowVisible", 1}, {"GetWindow", 1}, {"GetClassNameW", 1}};
    const CallCounts all = {
        {"IsWindowVisible", 1}, {"GetWindow", 1}, {"GetClassNameW", 1}, {"GetWindowTextW", 1}};
    WriteSettings("editor\n");
    const HWND owner = Other().Create({.title = L"Calculator"});
    const struct {
        const char* name;
        WindowSpec spec;
        CallCounts counts;
    } cases[] = {
        {"hidden", {.title = L"Editor", .visible = false}, hidden},
        {"owned", {.title = L"Editor", .style = Popup, .owner = owner}, owned},
        {"ours", {.className = L"MorvaneHiddenWindow", .title = L"Editor"}, ours},
        {"untitled", {.title = L""}, all},
        {"unmatched", {.title = L"Calculator"}, all},
        {"protected", {.className = L"#32770", .title = L"Windows Security, Editor"}, all},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ExpectForEach(c.spec, c.counts, c.counts);
    }
}

TEST_F(PlatformCallsTest, AMatchingWindowHasItsTitleReadAgainAndIsMadeTopmost) {
    // The title is read once to find the entry and again when pinning; later passes also check
    // whether the remembered windows still qualify.
    const CallCounts first = {{"IsWindowVisible", 1}, {"GetWindow", 1},   {"GetClassNameW", 1},
                              {"GetWindowTextW", 3},  {"IsWindow", 2},    {"IsIconic", 1},
                              {"GetWindowRect", 1},   {"SetWindowPos", 1}};
    const CallCounts later = {{"IsWindowVisible", 2}, {"GetWindow", 2},   {"GetClassNameW", 2},
                              {"GetWindowTextW", 4},  {"IsWindow", 3},    {"IsIconic", 1},
                              {"GetWindowRect", 1},   {"SetWindowPos", 1}};
    CallCounts grown = first;
    ++grown["SetWindowPos"];
    WriteSettings("editor\nlarge 640 480\n");
    const struct {
        const char* name;
        WindowSpec spec;
        CallCounts first;
    } cases[] = {
        {"without a size", {.title = L"Editor"}, first},
        {"large enough", {.title = L"Large", .width = 640, .height = 480}, first},
        {"too small", {.title = L"Large", .width = 320, .height = 240}, grown},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ExpectForEach(c.spec, c.first, later);
    }
}

TEST_F(PlatformCallsTest, APassEnumeratesOnceAndReadsTheFileOnce) {
    WriteSettings("editor\n");
    const CallCounts counts = CountCalls(ApplyAll);
    for (const auto& [name, count] : FileCalls(SmallFile)) {
        EXPECT_THAT(counts, testing::Contains(testing::Pair(name, count)));
    }
    EXPECT_THAT(counts, testing::Contains(testing::Pair("EnumWindows", 1)));
    EXPECT_FALSE(counts.contains("SetWindowPos"));
    EXPECT_FALSE(counts.contains(OtherCalls));
    EXPECT_TRUE(CountCalls([] { GetDesktopWindow(); }).contains(OtherCalls)) << "not even counted";
}

TEST_F(PlatformCallsTest, APassWithPinningOffEnumeratesNoWindows) {
    const HWND window = Window(L"Editor");
    windowsOfTheDesktop = {window};
    ApplySettings("editor\n");
    ASSERT_EQ(Engine().pinnedWindows, PinnedWindowSet({window}));
    CallCounts releasing = FileCalls(SmallFile);
    releasing.insert({{"IsWindow", 1}, {"SetWindowPos", 1}});
    WriteSettings("@pinning=0\neditor\n");
    EXPECT_EQ(CountCalls(ApplyAll), releasing);
    EXPECT_EQ(CountCalls(ApplyAll), FileCalls(SmallFile));
}

TEST_F(PlatformCallsTest, AFileIsReadInPartsToTheEnd) {
    for (const std::size_t size : {12U, 0x3FFFU, 0x4000U, 0x4001U, 1'000'000U}) {
        SCOPED_TRACE(size);
        std::string text = "@pinning=0\n";
        text.resize(size, '#');
        WriteSettings(text);
        EXPECT_EQ(CountCalls(ApplyAll), FileCalls(size));
        EXPECT_FALSE(Engine().pinList.pinning);
    }
    ResetProfile();
    ASSERT_FALSE(ReadSettings());
    const CallCounts missing = CountCalls(ApplyAll);
    EXPECT_THAT(missing, testing::Contains(testing::Pair("CreateFileW", 1)));
    EXPECT_FALSE(missing.contains("ReadFile"));
}

// Creating the file and saving to it are separate steps, and saving always follows.
TEST_F(PlatformCallsTest, AMissingFileIsWrittenTwiceAndAnExistingOneOnce) {
    const CallCounts write = {
        {"CreateFileW", 1}, {"SetEndOfFile", 1}, {"WriteFile", 1}, {"CloseHandle", 1}};
    WriteSettings("");
    ASSERT_NE(DeleteFileW(SettingsPath().c_str()), FALSE);
    for (const int times : {2, 1}) {
        CallCounts expected = Times(write, times);
        expected["GetFileAttributesW"] = 1;
        EXPECT_EQ(CountCalls(SaveSettings), expected);
        EXPECT_EQ(ReadSettings(), WrittenSettings(""));
    }
}

}  // namespace
}  // namespace morvane::test
