// The command "Open settings", which opens the file in Notepad.

#include <algorithm>
#include <array>

#include "program/faulty_scene.h"
#include "program/notepad.h"

namespace morvane::test {
namespace {

std::wstring ImageOf(HANDLE process) {
    std::array<wchar_t, 1024> path{};
    auto length = static_cast<DWORD>(path.size());
    return QueryFullProcessImageNameW(process, 0, path.data(), &length) != FALSE ? path.data()
                                                                                 : L"(unknown)";
}

bool SamePath(std::wstring_view a, std::wstring_view b) {
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                                static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

class OpenSettingsTest : public ProgramTest {
protected:
    void TearDown() override {
        if (DisposableProfile()) {
            EndNotepads();
        }
    }
};

// Whether the only Notepad was started with these arguments and nothing after them.
bool IsStartedWith(const std::wstring& arguments) {
    if (!WaitUntil([] { return NotepadProcesses().size() == 1; })) {
        return false;
    }
    const KernelHandle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE,
                                           NotepadProcesses().front()));
    return CommandLineOf(process.get()).ends_with(L" " + arguments);
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
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    ASSERT_TRUE(WaitUntil([] { return NotepadProcesses().size() == 1; }));
    const KernelHandle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE,
                                           NotepadProcesses().front()));
    ASSERT_TRUE(process);
    std::array<wchar_t, MAX_PATH> system{};
    GetSystemDirectoryW(system.data(), static_cast<UINT>(system.size()));
    const std::wstring editor = std::wstring(system.data()) + L"\\notepad.exe";
    EXPECT_TRUE(SamePath(ImageOf(process.get()), editor))
        << testing::PrintToString(ImageOf(process.get()));
    const std::wstring commandLine = CommandLineOf(process.get());
    SCOPED_TRACE(testing::PrintToString(commandLine));
    const std::wstring arguments = L" \"" + SettingsPath() + L"\"";
    ASSERT_TRUE(commandLine.ends_with(arguments));
    // The shell may or may not quote the program's path.
    std::wstring start = commandLine.substr(0, commandLine.size() - arguments.size());
    start.erase(std::remove(start.begin(), start.end(), L'"'), start.end());
    EXPECT_TRUE(SamePath(start, editor));
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
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    EXPECT_TRUE(IsStartedWith(L"\"" + SettingsPath() + L"\""));
    EXPECT_EQ(GetFileAttributesW(SettingsPath().c_str()) & FILE_ATTRIBUTE_DIRECTORY,
              static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY));
}

TEST_F(OpenSettingsTest, EditorIsFoundWithoutTheSystemFolder) {
    ForgetRecordedCalls();
    const Program program = StartedFaultyProgram("GetSystemDirectoryW");
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    EXPECT_EQ(CountOf("GetSystemDirectoryW failed"), 1U);
    EXPECT_TRUE(IsStartedWith(L"\"" + SettingsPath() + L"\""));
    EXPECT_EQ(program.ExitByCommand(), 0U);
    ForgetRecordedCalls();
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
