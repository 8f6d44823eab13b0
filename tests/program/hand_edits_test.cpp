// The settings file edited by hand while the program runs.

#include "program/scene.h"

namespace morvane::test {
namespace {

// Starts the program with a target window and a sentinel already pinned.
class HandEditsTest : public ProgramTest {
protected:
    void SetUp() override {
        ProgramTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        ASSERT_TRUE(EditSettings("Sentinel\nTarget\n"));
        actor_.emplace();
        target_ = actor_->Create({.title = L"Target"});
        other_ = actor_->Create({.title = L"Other"});
        sentinel_.emplace(*actor_);
        program_.emplace();
        ASSERT_NE(program_->WaitForControlWindow(), nullptr);
        ASSERT_TRUE(BecomesTopmost(target_));
        ASSERT_TRUE(sentinel_->WaitForPin());
    }

    // NOLINTBEGIN(bugprone-unchecked-optional-access): SetUp has filled them before every test.
    [[nodiscard]] bool PassGoesBy() const { return sentinel_->WaitForPass(*program_); }

    // Waits for a pass while the file does not name the sentinel.
    [[nodiscard]] bool PassWithoutSentinel() const {
        return program_->SendCommand(ApplyNowCommand) && program_->SendCommand(ApplyNowCommand);
    }

    Actor& TheActor() { return *actor_; }
    [[nodiscard]] const Program& TheProgram() const { return *program_; }
    // NOLINTEND(bugprone-unchecked-optional-access)
    [[nodiscard]] HWND Target() const { return target_; }
    [[nodiscard]] HWND Other() const { return other_; }

private:
    std::optional<Actor> actor_;
    HWND target_ = nullptr;
    HWND other_ = nullptr;
    std::optional<Sentinel> sentinel_;
    std::optional<Program> program_;
};

struct EditCase {
    const char* name;
    std::string bytes;
    bool pinsOther;
};

// Each text names the sentinel early, so that its effect can be waited for.
std::vector<EditCase> EditCases() {
    std::string many = "Sentinel\n";
    for (int i = 0; i < 10'000; ++i) {
        many += "Nothing has this title " + std::to_string(i) + "\n";
    }
    std::string ninetyNine = "Sentinel\n";
    for (int i = 0; i < 98; ++i) {
        ninetyNine += "Nothing " + std::to_string(i) + "\n";
    }
    const std::string longLine(100'000, 'x');
    std::string tenMegabytes = "Sentinel\n# ";
    tenMegabytes.resize(10'000'000, 'x');
    return {
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
        {"switch without a value is a pattern", "Sentinel\n@pinning=\nOther\n", true},
        {"byte order mark hides its line", "\xEF\xBB\xBFOther\nSentinel\n", false},
        {"byte order mark leaves the next line", "\xEF\xBB\xBF# x\nSentinel\nOther\n", true},
        {"ill-formed bytes", "Sentinel\n\xFF\xFE\xC3\x28\n\xED\xA0\x80\nOther\n", true},
        {"ill-formed bytes in the line", "Sentinel\nOther\xFF\n", false},
        {"NUL bytes", std::string("Sentinel\nOt\0her\n", 16), false},
        {"cut inside a character", "Sentinel\nOther\n\xE6\x97", true},
        {"cut inside a line", "Sentinel\nOthe", true},
        {"very long line", "Sentinel\n" + longLine + "\nOther\n", true},
        {"ten megabytes", tenMegabytes + "\nOther\n", true},
        {"hundredth entry", ninetyNine + "Other\n", true},
        {"hundred and first entry", ninetyNine + "One more\nOther\n", false},
        {"ten thousand lines", many + "Other\n", false},
        {"ten thousand lines, then the switch", "@pinning=0\n" + many + "@pinning=on\n", false},
        {"UTF-8 beyond ASCII", "Sentinel\n\xE8\xB3\x87\nOther\n", true},
    };
}

TEST_F(HandEditsTest, FileTextsOfEveryKindTakeEffect) {
    for (const EditCase& item : EditCases()) {
        ASSERT_TRUE(EditSettings("Sentinel\n")) << item.name;
        ASSERT_TRUE(PassGoesBy()) << item.name;
        TheActor().SetTopmost(Other(), false);
        ASSERT_TRUE(EditSettings(item.bytes)) << item.name;
        EXPECT_TRUE(PassGoesBy()) << item.name;
        EXPECT_EQ(IsTopmost(Other()), item.pinsOther) << item.name;
    }
}

TEST_F(HandEditsTest, AddedLineTakesEffectWithoutACommand) {
    ASSERT_TRUE(EditSettings("Sentinel\nTarget\nOther\n"));
    EXPECT_TRUE(BecomesTopmost(Other()));
}

TEST_F(HandEditsTest, FileWrittenInPlaceTakesEffect) {
    ASSERT_TRUE(WriteSettings("Sentinel\nTarget\nOther\n"));
    EXPECT_TRUE(BecomesTopmost(Other()));
}

TEST_F(HandEditsTest, RemovedLineLeavesItsWindowAsItIs) {
    ASSERT_TRUE(EditSettings("Sentinel\n"));
    ASSERT_TRUE(PassGoesBy());
    EXPECT_TRUE(IsTopmost(Target()));
    // It is no longer remembered, so the user's change lasts.
    TheActor().SetTopmost(Target(), false);
    ASSERT_TRUE(PassGoesBy());
    EXPECT_FALSE(IsTopmost(Target()));
}

TEST_F(HandEditsTest, EverySpellingOfOffReleases) {
    for (const char* line :
         {"@pinning=0", "@pinning=off", "@PINNING=False", "@pinning= 0 ", "  @Pinning=OFF\r"}) {
        ASSERT_TRUE(EditSettings("Sentinel\nTarget\n")) << line;
        ASSERT_TRUE(BecomesTopmost(Target())) << line;
        ASSERT_TRUE(EditSettings(std::string("Sentinel\nTarget\n") + line + "\n")) << line;
        EXPECT_TRUE(BecomesOrdinary(Target())) << line;
    }
}

TEST_F(HandEditsTest, AnyOtherValueOfTheSwitchMeansOn) {
    for (const char* line :
         {"@pinning=1", "@pinning=00", "@pinning=no", "@pinning=on", "@pinning = 0"}) {
        ASSERT_TRUE(EditSettings("@pinning=0\n")) << line;
        ASSERT_TRUE(BecomesOrdinary(Target())) << line;
        ASSERT_TRUE(EditSettings(std::string(line) + "\nTarget\nSentinel\n")) << line;
        EXPECT_TRUE(BecomesTopmost(Target())) << line;
    }
}

TEST_F(HandEditsTest, SixteenBitFileNamesNothing) {
    std::string wide = "\xFF\xFE";
    for (const char unit : std::string_view("Other\n")) {
        wide.push_back(unit);
        wide.push_back('\0');
    }
    ASSERT_TRUE(EditSettings(wide));
    ASSERT_TRUE(PassWithoutSentinel());
    EXPECT_FALSE(IsTopmost(Other()));
    ASSERT_TRUE(EditSettings("Other\n"));
    EXPECT_TRUE(BecomesTopmost(Other()));
}

TEST_F(HandEditsTest, LineBehindAByteOrderMarkComesBackAsAnEntry) {
    ASSERT_TRUE(EditSettings("\xEF\xBB\xBF# note\nTarget\nSentinel\n"));
    ASSERT_TRUE(PassGoesBy());
    ASSERT_TRUE(TheProgram().SendCommand(AlwaysOnTopCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(false, {"\xEF\xBB\xBF# note", "Target", "Sentinel"}));
}

TEST_F(HandEditsTest, DeletedFileMeansNoEntriesAndReleasesNothing) {
    ASSERT_NE(DeleteFileW(SettingsPath().c_str()), FALSE);
    ASSERT_TRUE(PassWithoutSentinel());
    EXPECT_TRUE(IsTopmost(Target()));
    const std::size_t asked = TopmostRequests(TheActor(), Target());
    ASSERT_TRUE(PassWithoutSentinel());
    EXPECT_EQ(TopmostRequests(TheActor(), Target()), asked);
    EXPECT_FALSE(PathExists(SettingsPath()));
    // It is no longer remembered, so switching off does not release it either.
    ASSERT_TRUE(EditSettings("@pinning=0\nTarget\n"));
    ASSERT_TRUE(PassWithoutSentinel());
    EXPECT_TRUE(IsTopmost(Target()));
}

TEST_F(HandEditsTest, DeletedFolderIsMadeAgainWithoutAFile) {
    ASSERT_TRUE(PassGoesBy());
    RemoveDataFolder();
    EXPECT_TRUE(WaitUntil([] { return PathExists(DataFolder()); }));
    ASSERT_TRUE(PassWithoutSentinel());
    EXPECT_FALSE(PathExists(SettingsPath()));
    EXPECT_TRUE(IsTopmost(Target()));
}

TEST_F(HandEditsTest, LockedFileMeansNoEntriesUntilItIsFree) {
    {
        FileHandle lock;
        ASSERT_TRUE(WaitUntil([&lock] {
            lock.reset(CreateFileW(SettingsPath().c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                   OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
            return static_cast<bool>(lock);
        }));
        ASSERT_TRUE(PassWithoutSentinel());
        TheActor().SetTopmost(Target(), false);
        ASSERT_TRUE(PassWithoutSentinel());
        EXPECT_FALSE(IsTopmost(Target()));
        // This list cannot be saved, and the program goes on.
        EXPECT_TRUE(TheProgram().SendCommand(AlwaysOnTopCommand));
    }
    EXPECT_EQ(ReadSettings(), "Sentinel\nTarget\n");
    EXPECT_TRUE(BecomesTopmost(Target()));
}

// A command saves what was read, and here that is nothing.
TEST_F(HandEditsTest, CommandLosesTheEntriesOfAFileThatMayOnlyBeWritten) {
    {
        FileHandle holder;
        // Fails while the program is reading the file.
        ASSERT_TRUE(WaitUntil([&holder] {
            holder.reset(CreateFileW(SettingsPath().c_str(), GENERIC_READ,
                                     FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr));
            return static_cast<bool>(holder);
        }));
        ASSERT_TRUE(PassWithoutSentinel());
        TheActor().SetTopmost(Target(), false);
        ASSERT_TRUE(PassWithoutSentinel());
        EXPECT_FALSE(IsTopmost(Target())) << "the file was read despite the lock";
        EXPECT_TRUE(TheProgram().SendCommand(AlwaysOnTopCommand));
    }
    EXPECT_EQ(ReadSettings(), SettingsText(false, {}));
}

TEST_F(HandEditsTest, FolderInPlaceOfTheFileMeansNoEntries) {
    ASSERT_NE(DeleteFileW(SettingsPath().c_str()), FALSE);
    ASSERT_NE(CreateDirectoryW(SettingsPath().c_str(), nullptr), FALSE);
    ASSERT_TRUE(PassWithoutSentinel());
    TheActor().SetTopmost(Target(), false);
    ASSERT_TRUE(PassWithoutSentinel());
    EXPECT_FALSE(IsTopmost(Target()));
    EXPECT_TRUE(TheProgram().SendCommand(AlwaysOnTopCommand));
    EXPECT_TRUE(TheProgram().IsRunning());
    ASSERT_NE(RemoveDirectoryW(SettingsPath().c_str()), FALSE);
    ASSERT_TRUE(EditSettings("Target\n"));
    EXPECT_TRUE(BecomesTopmost(Target()));
}

TEST_F(HandEditsTest, CommandNormalisesTheWholeFile) {
    ASSERT_TRUE(
        EditSettings("# mine\r\n\r\n  Foo   1280    720 \r\nBar 0 0\nNotes\t0\t600\nBig 99999 0\n"
                     "Foo -5 10\n@PINNING=on\nSentinel"));
    ASSERT_TRUE(PassGoesBy());
    ASSERT_TRUE(TheProgram().SendCommand(AlwaysOnTopCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(false, {"Foo\t1280\t720", "Bar", "Notes\t0\t600",
                                                   "Big\t8192\t0", "Foo -5 10", "Sentinel"}));
}

}  // namespace
}  // namespace morvane::test
