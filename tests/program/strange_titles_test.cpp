// Titles that are hard for the file, the menu and the matching.

#include "program/scene.h"

namespace morvane::test {
namespace {

using StrangeTitlesTest = ProgramTest;

[[nodiscard]] bool ToggleRow(const Program& program, const std::wstring& title) {
    return SendRowCommand(program, TogglePinCommand, title);
}

struct TitleCase {
    const char* name;
    std::wstring title;
    std::string line;
};

// The longest title that the program reads, in characters of three bytes each in the file.
TitleCase LongestTitle() {
    constexpr std::size_t Units = 511;
    std::string line;
    for (std::size_t i = 0; i < Units; ++i) {
        line += "\xE7\xAA\x93";
    }
    return {"511 units", std::wstring(Units, L'\x7A93'), line};
}

TEST_F(StrangeTitlesTest, TitlesThatTheFileCanHoldArePinnedAndReleased) {
    const TitleCase cases[] = {
        LongestTitle(),
        {"ampersands", L"Tom & Jerry && all", "Tom & Jerry && all"},
        {"tab", L"left\tright", "left\tright"},
        {"control characters", L"a\x01\x02\x1B\x7F z", "a\x01\x02\x1B\x7F z"},
        {"right-to-left marks",
         L"a\x200F\x202E"
         L"b",
         "a\xE2\x80\x8F\xE2\x80\xAE"
         "b"},
        {"whole surrogate pairs", L"\xD83D\xDE00 smile", "\xF0\x9F\x98\x80 smile"},
        {"not a character",
         L"a\xFFFE"
         L"b",
         "a\xEF\xBF\xBE"
         "b"},
    };
    Actor actor;
    const Program program = StartedProgram();
    for (const TitleCase& item : cases) {
        SCOPED_TRACE(item.name);
        const HWND window = actor.Create({.title = item.title});
        ASSERT_TRUE(ToggleRow(program, item.title));
        EXPECT_TRUE(IsTopmost(window));
        EXPECT_EQ(ReadSettings(), SettingsText(true, {item.line}));
        ASSERT_TRUE(ToggleRow(program, item.title));
        EXPECT_TRUE(BecomesOrdinary(window));
        EXPECT_EQ(ReadSettings(), SettingsText(true, {}));
        actor.Destroy(window);
    }
}

// The format cannot express these titles. Something is still saved as an entry, which the user sees
// in the file.
TEST_F(StrangeTitlesTest, TitlesThatTheFileCannotHoldAreNotPinned) {
    const TitleCase cases[] = {
        {"lone high surrogate", L"half \xD83D", "half \xEF\xBF\xBD"},
        {"lone low surrogate", L"half \xDE00", "half \xEF\xBF\xBD"},
    };
    Actor actor;
    const Program program = StartedProgram();
    for (const TitleCase& item : cases) {
        SCOPED_TRACE(item.name);
        ASSERT_TRUE(EditSettings("@pinning=1\n"));
        ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
        const HWND window = actor.Create({.title = item.title});
        ASSERT_TRUE(ToggleRow(program, item.title));
        EXPECT_FALSE(IsTopmost(window));
        EXPECT_EQ(ReadSettings(), SettingsText(true, {item.line}));
        actor.Destroy(window);
    }
}

TEST_F(StrangeTitlesTest, TitleOfSeveralLinesBecomesSeveralEntries) {
    Actor actor;
    const std::wstring title = L"first\nsecond";
    const HWND window = actor.Create({.title = title});
    const Program program = StartedProgram();
    ASSERT_TRUE(ToggleRow(program, title));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"first", "second"}));
    EXPECT_TRUE(IsTopmost(window)) << "pinned by the longer entry";
    // Each choice removes one of the entries.
    ASSERT_TRUE(ToggleRow(program, title));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"first"}));
    ASSERT_TRUE(ToggleRow(program, title));
    EXPECT_TRUE(BecomesOrdinary(window));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {}));
}

TEST_F(StrangeTitlesTest, LineOfATitleThatReadsAsTheSwitchSetsIt) {
    Actor actor;
    const std::wstring title = L"first\n@pinning=0";
    const HWND window = actor.Create({.title = title});
    const Program program = StartedProgram();
    ASSERT_TRUE(ToggleRow(program, title));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {"first", "@pinning=0"}));
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_FALSE(IsTopmost(window));
}

}  // namespace
}  // namespace morvane::test
