// The settings file edited by hand while the program runs.

#include "program/scene.h"

namespace morvane::test {
namespace {

using HandEditsTest = ProgramTest;

struct EditCase {
    const char* name;
    std::string_view bytes;
    bool pinsOther;
};

using namespace std::string_view_literals;

// Each text names the sentinel, so that its effect can be waited for.
constexpr EditCase EditCases[] = {
    {"added line", "Sentinel\nOther\n", true},
    {"added line without an end", "Sentinel\nOther", true},
    {"other case", "sentinel\noTHER\n", true},
    {"part of the title", "Sentinel\nthe\n", true},
    {"blanks around", "Sentinel\n  \tOther \t \n", true},
    {"CRLF", "Sentinel\r\nOther\r\n", true},
    {"comment", "Sentinel\n#Other\n# Other\n", false},
    {"blanks before a comment", "Sentinel\n # Other\n", false},
    {"comments around", "# a\nSentinel\n# b\nOther\n# c\n", true},
    {"more text than the title", "Sentinel\nOther.\n", false},
    {"blank lines only", "Sentinel\n\n \n\t\n", false},
    {"switched on late", "@pinning=0\nSentinel\nOther\n@pinning=1\n", true},
    {"switch with a word", "Sentinel\n@pinning=yes\nOther\n", true},
    {"switch with another number", "Sentinel\n@pinning=00\nOther\n", true},
    {"switch with blanks is a pattern", "Sentinel\n@pinning = 0\nOther\n", true},
    {"switch without a value is a pattern", "Sentinel\n@pinning=\nOther\n", true},
    {"byte order mark hides its line", "\xEF\xBB\xBFOther\nSentinel\n", false},
    {"byte order mark leaves the next line", "\xEF\xBB\xBF# x\nSentinel\nOther\n", true},
    {"ill-formed bytes", "Sentinel\n\xFF\xFE\xC3\x28\n\xED\xA0\x80\nOther\n", true},
    {"ill-formed bytes in the line", "Sentinel\nOther\xFF\n", false},
    {"NUL bytes", "Sentinel\nOt\0her\n"sv, false},
    {"16 bits per character", "Sentinel\nO\0t\0h\0e\0r\0\n\0"sv, false},
    {"cut inside a character", "Sentinel\nOther\n\xE6\x97", true},
    {"cut inside a line", "Sentinel\nOthe", true},
    {"UTF-8 beyond ASCII", "Sentinel\n\xE8\xB3\x87\nOther\n", true},
};

TEST_F(HandEditsTest, FileTextsOfEveryKindTakeEffect) {
    const HWND other = Window(L"Other");
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\n");
    for (const EditCase& item : EditCases) {
        SCOPED_TRACE(item.name);
        WriteSettings("Sentinel\n");
        ASSERT_TRUE(sentinel.WaitForPass(program));
        Other().SetTopmost(other, false);
        WriteSettings(item.bytes);
        EXPECT_TRUE(sentinel.WaitForPass(program));
        EXPECT_EQ(IsTopmost(other), item.pinsOther);
    }
}

TEST_F(HandEditsTest, EverySpellingOfOffReleases) {
    const HWND target = Window(L"Target");
    const Program program = StartedProgram();
    for (const char* line :
         {"@pinning=0", "@pinning=off", "@PINNING=False", "@pinning= 0 ", "  @Pinning=OFF\r"}) {
        WriteSettings("Target\n");
        ASSERT_TRUE(BecomesTopmost(target)) << line;
        WriteSettings(std::string("Target\n") + line + "\n");
        EXPECT_TRUE(BecomesOrdinary(target)) << line;
    }
}

TEST_F(HandEditsTest, FileWrittenInPlaceTakesEffectWithoutACommand) {
    const HWND target = Window(L"Target");
    const Program program = StartedProgram("Nowhere\n");
    ASSERT_TRUE(WriteFileBytes(SettingsPath(), "Target\n"));
    EXPECT_TRUE(BecomesTopmost(target));
}

TEST_F(HandEditsTest, DeletedFolderMeansNoEntriesReleasesNothingAndIsMadeAgainEmpty) {
    const HWND target = Window(L"Target");
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\nTarget\n", {target});
    // Starts right after a pass, so that none reads the file during the removal.
    ASSERT_TRUE(sentinel.WaitForTimedPass());
    RemoveDataFolder();
    EXPECT_TRUE(WaitUntil([] { return PathExists(DataFolder()); }));
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    const std::size_t asked = TopmostRequests(Other(), target);
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_EQ(TopmostRequests(Other(), target), asked);
    EXPECT_TRUE(IsTopmost(target));
    EXPECT_FALSE(PathExists(SettingsPath()));
    // It is no longer remembered, so switching off does not release it either.
    WriteSettings("@pinning=0\nTarget\n");
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    EXPECT_TRUE(IsTopmost(target));
}

TEST_F(HandEditsTest, LockedFileMeansNoEntriesUntilItIsFree) {
    const HWND target = Window(L"Target");
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Sentinel\nTarget\n", {target});
    {
        // Right after a pass, so that none has the file open.
        ASSERT_TRUE(sentinel.WaitForTimedPass());
        const FileHandle lock = HoldFile(SettingsPath(), GENERIC_READ | GENERIC_WRITE, 0);
        ASSERT_TRUE(lock);
        ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
        Other().SetTopmost(target, false);
        ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
        EXPECT_FALSE(IsTopmost(target));
        // This list cannot be saved, and the program goes on.
        EXPECT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    }
    EXPECT_EQ(ReadSettings(), "Sentinel\nTarget\n");
    EXPECT_TRUE(BecomesTopmost(target));
}

TEST_F(HandEditsTest, CommandNormalisesTheWholeFile) {
    const Sentinel sentinel(Other());
    const Program program = StartedProgram("Nowhere\n");
    WriteSettings(
        "# mine\r\n\r\n  Foo   1280    720 \r\nBar 0 0\nNotes\t0\t600\nBig 99999 0\n"
        "Foo -5 10\n@PINNING=on\nSentinel");
    ASSERT_TRUE(sentinel.WaitForPass(program));
    ASSERT_TRUE(program.SendCommand(AlwaysOnTopCommand));
    EXPECT_EQ(ReadSettings(),
              SettingsText(false,
                           "Foo\t1280\t720\nBar\nNotes\t0\t600\nBig\t8192\t0\nFoo -5 10\n"
                           "Sentinel\n"));
}

}  // namespace
}  // namespace morvane::test
