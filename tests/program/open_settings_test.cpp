// The command "Open settings", which opens the file in Notepad.

#include <algorithm>
#include <array>

#include "program/faulty_scene.h"
#include "program/notepad.h"

namespace morvane::test {
namespace {

class OpenSettingsTest : public FaultyProgramTest {
protected:
    void TearDown() override {
        if (DisposableProfile()) {
            EndNotepads();
        }
        FaultyProgramTest::TearDown();
    }
};

std::string Utf8(const std::wstring& text) {
    std::array<char, 1024> bytes{};
    WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, bytes.data(), static_cast<int>(bytes.size()),
                        nullptr, nullptr);
    return bytes.data();
}

// Whether the last recorded call starts this editor with only the quoted path of the settings.
bool HasStarted(const std::wstring& editor) {
    const std::vector<std::string> expected = {"ShellExecuteW passed", "open", Utf8(editor),
                                               Utf8(L"\"" + SettingsPath() + L"\"")};
    const std::vector<std::string> lines = RecordedCalls();
    return lines.size() >= expected.size() &&
           std::equal(expected.rbegin(), expected.rend(), lines.rbegin()) &&
           WaitUntil([] { return NotepadProcesses().size() == 1; });
}

std::wstring SystemNotepad() {
    std::array<wchar_t, MAX_PATH> system{};
    GetSystemDirectoryW(system.data(), static_cast<UINT>(system.size()));
    return std::wstring(system.data()) + L"\\notepad.exe";
}

HWND NotepadWindow() {
    const std::vector<HWND> windows = VisibleWindowsOfClass(L"Notepad");
    return windows.empty() ? nullptr : windows.front();
}

// The text in Notepad, with the file's line endings.
std::string ShownText() {
    HWND edit = nullptr;
    if (!WaitUntil([&edit] {
            edit = FindWindowExW(NotepadWindow(), nullptr, nullptr, nullptr);
            return edit != nullptr && SendMessageW(edit, WM_GETTEXTLENGTH, 0, 0) > 0;
        })) {
        return "(no text)";
    }
    std::wstring text(65'536, L'\0');
    const LRESULT length =
        SendMessageW(edit, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    std::string narrow;
    for (const wchar_t unit : text.substr(0, static_cast<std::size_t>(length))) {
        if (unit != L'\r') {
            narrow.push_back(unit < 0x80 ? static_cast<char>(unit) : '?');
        }
    }
    return narrow;
}

TEST_F(OpenSettingsTest, NotepadShowsTheFile) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    ASSERT_TRUE(WaitUntil([] { return NotepadWindow() != nullptr; }));
    EXPECT_EQ(ShownText(), "Target\n");
    EXPECT_NE(WindowTitle(NotepadWindow()).find(L"config.txt"), std::wstring::npos);
    EXPECT_EQ(NotepadProcesses().size(), 1U);
    EXPECT_EQ(ReadSettings(), "Target\n");
}

TEST_F(OpenSettingsTest, EditorIsTheSystemsNotepadWithOnlyTheQuotedPath) {
    const Program program = StartedFaultyProgram("ShellExecuteW@0");
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    EXPECT_TRUE(HasStarted(SystemNotepad())) << testing::PrintToString(RecordedCalls());
}

TEST_F(OpenSettingsTest, DeletedFileIsWrittenBeforeNotepadOpensIt) {
    Actor actor;
    const HWND target = actor.Create({.title = L"Target"});
    const Program program = StartedProgram();
    ASSERT_NE(DeleteFileW(SettingsPath().c_str()), FALSE);
    ASSERT_TRUE(program.SendCommand(ApplyNowCommand));
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    EXPECT_EQ(ReadSettings(), SettingsText(true, {}));
    EXPECT_EQ(ShownText(), SettingsText(true, {}));
    EXPECT_FALSE(IsTopmost(target));
}

TEST_F(OpenSettingsTest, SpacesInThePathDoNotSplitIt) {
    const std::wstring elsewhere = RoamingFolder() + L"\\A folder  with blanks";
    CreateDirectoryW(elsewhere.c_str(), nullptr);
    {
        const ShellFolderOverride moved(L"AppData", elsewhere);
        ASSERT_TRUE(WriteSettings("In the other folder\n"));
        const Program program = StartedProgram();
        ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
        EXPECT_EQ(ShownText(), "In the other folder\n");
        EndNotepads();
        EXPECT_EQ(program.ExitByCommand(), 0U);
        RemoveDataFolder();
    }
    RemoveDirectoryW(elsewhere.c_str());
}

TEST_F(OpenSettingsTest, FolderInPlaceOfTheFileIsPassedToNotepad) {
    ASSERT_NE(CreateDirectoryW(DataFolder().c_str(), nullptr), FALSE);
    ASSERT_NE(CreateDirectoryW(SettingsPath().c_str(), nullptr), FALSE);
    const Program program = StartedFaultyProgram("ShellExecuteW@0");
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    EXPECT_TRUE(HasStarted(SystemNotepad())) << testing::PrintToString(RecordedCalls());
    EXPECT_EQ(GetFileAttributesW(SettingsPath().c_str()) & FILE_ATTRIBUTE_DIRECTORY,
              static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY));
}

TEST_F(OpenSettingsTest, EditorIsFoundWithoutTheSystemFolder) {
    const Program program = StartedFaultyProgram("GetSystemDirectoryW,ShellExecuteW@0");
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    EXPECT_EQ(CountOf("GetSystemDirectoryW failed"), 1U);
    EXPECT_TRUE(HasStarted(L"notepad.exe")) << testing::PrintToString(RecordedCalls());
    EXPECT_EQ(program.ExitByCommand(), 0U);
}

TEST_F(OpenSettingsTest, NothingOpensWithoutASettingsPath) {
    const ShellFolderOverride away(L"AppData", L"Q:\\nowhere");
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    EXPECT_TRUE(NotepadProcesses().empty());
}

TEST_F(OpenSettingsTest, ProgramRunsOnAndExitsWhileNotepadIsOpen) {
    ASSERT_TRUE(WriteSettings("Target\n"));
    Actor actor;
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    ASSERT_TRUE(WaitUntil([] { return NotepadWindow() != nullptr; }));
    const HWND target = actor.Create({.title = L"Target"});
    EXPECT_TRUE(BecomesTopmost(target));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    EXPECT_EQ(NotepadProcesses().size(), 1U);
}

}  // namespace
}  // namespace morvane::test
