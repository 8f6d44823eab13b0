// Titles that are hard for the file, the menu and the matching.

#include <algorithm>

#include "program/scene.h"

namespace morvane::test {
namespace {

using StrangeTitlesTest = ProgramTest;

struct TitleCase {
    const char* name;
    std::wstring title;
    std::string lines;  // in the file
    bool isPinned = true;
};

// The longest title that the program reads, in characters of three bytes each in the file.
TitleCase LongestTitle() {
    constexpr std::size_t Units = 511;
    std::string line;
    for (std::size_t i = 0; i < Units; ++i) {
        line += "\xE7\xAA\x93";
    }
    return {"511 units", std::wstring(Units, L'\x7A93'), line + "\n"};
}

// Where the format cannot express a title, something is still saved as an entry, which the user
// sees in the file.
TEST_F(StrangeTitlesTest, TitlesArePinnedIfTheFileCanHoldThemAndReleased) {
    const TitleCase cases[] = {
        LongestTitle(),
        {"ampersands", L"Tom & Jerry && all", "Tom & Jerry && all\n"},
        {"tab", L"left\tright", "left\tright\n"},
        {"control characters", L"a\x01\x02\x1B\x7F z", "a\x01\x02\x1B\x7F z\n"},
        {"right-to-left marks", L"a\x200F\x202E.", "a\xE2\x80\x8F\xE2\x80\xAE.\n"},
        {"whole surrogate pairs", L"\xD83D\xDE00 smile", "\xF0\x9F\x98\x80 smile\n"},
        {"not a character", L"a\xFFFE.", "a\xEF\xBF\xBE.\n"},
        // Pinned by the longer entry. Each choice removes one of the entries.
        {"two lines", L"first\nsecond", "first\nsecond\n"},
        {"lone high surrogate", L"half \xD83D", "half \xEF\xBF\xBD\n", false},
        {"lone low surrogate", L"half \xDE00", "half \xEF\xBF\xBD\n", false},
        {"line that reads as the switch", L"first\n@pinning=0", "first\n@pinning=0\n", false},
    };
    const Program program = StartedProgram();
    for (const TitleCase& item : cases) {
        SCOPED_TRACE(item.name);
        WriteSettings("");
        ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
        const HWND window = Window(item.title);
        ASSERT_TRUE(SendRowCommand(program, TogglePinCommand, item.title));
        EXPECT_EQ(IsTopmost(window), item.isPinned);
        EXPECT_EQ(ReadSettings(), SettingsText(true, item.lines));
        if (item.isPinned) {
            const auto lines = std::count(item.lines.begin(), item.lines.end(), '\n');
            for (int choice = 0; choice < lines; ++choice) {
                ASSERT_TRUE(SendRowCommand(program, TogglePinCommand, item.title));
            }
            EXPECT_TRUE(BecomesOrdinary(window));
            EXPECT_EQ(ReadSettings(), SettingsText(true, ""));
        }
        Other().Destroy(window);
    }
}

}  // namespace
}  // namespace morvane::test
