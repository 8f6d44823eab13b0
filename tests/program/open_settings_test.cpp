// The command "Open settings": Notepad with the file.

#include <algorithm>
#include <array>
#include <bit>

#include "program/scene.h"

#include <tlhelp32.h>
#include <winternl.h>

namespace morvane::test {
namespace {

std::vector<DWORD> NotepadProcesses() {
    std::vector<DWORD> processes;
    const FileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot.get(), &entry); more != FALSE;
         more = Process32NextW(snapshot.get(), &entry)) {
        if (CompareStringOrdinal(static_cast<const wchar_t*>(entry.szExeFile), -1, L"notepad.exe",
                                 -1, TRUE) == CSTR_EQUAL) {
            processes.push_back(entry.th32ProcessID);
        }
    }
    return processes;
}

// The session is private: every Notepad in it has been opened by the program under test.
void EndNotepads() {
    for (const DWORD id : NotepadProcesses()) {
        const KernelHandle process(OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
        TerminateProcess(process.get(), 0);
        WaitForSingleObject(process.get(), 5'000);
    }
}

std::wstring ImageOf(HANDLE process) {
    std::array<wchar_t, 1024> path{};
    auto length = static_cast<DWORD>(path.size());
    return QueryFullProcessImageNameW(process, 0, path.data(), &length) != FALSE ? path.data()
                                                                                 : L"(unknown)";
}

// Reads a value, or count units of text, out of the other process's memory.
template <typename Value>
bool ReadFrom(HANDLE process, const void* address, Value* values, std::size_t count = 1) {
    SIZE_T bytes = 0;
    return ReadProcessMemory(process, address, values, count * sizeof(Value), &bytes) != FALSE &&
           bytes == count * sizeof(Value);
}

// The command line as the process was started with; no documented call tells it to others.
std::wstring CommandLineOf(HANDLE process) {
    using Query = NTSTATUS(NTAPI*)(HANDLE, PROCESSINFOCLASS, PVOID, ULONG, PULONG);
    const auto query = std::bit_cast<Query>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryInformationProcess"));
    PROCESS_BASIC_INFORMATION basic{};
    PEB block{};
    RTL_USER_PROCESS_PARAMETERS parameters{};
    if (query == nullptr ||
        query(process, ProcessBasicInformation, &basic, sizeof(basic), nullptr) != 0 ||
        !ReadFrom(process, basic.PebBaseAddress, &block) ||
        !ReadFrom(process, block.ProcessParameters, &parameters)) {
        return L"(unknown)";
    }
    std::wstring text(parameters.CommandLine.Length / sizeof(wchar_t), L'\0');
    return ReadFrom(process, parameters.CommandLine.Buffer, text.data(), text.size())
               ? text
               : L"(unreadable)";
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

HWND NotepadWindow() {
    const std::vector<HWND> windows = VisibleWindowsOfClass(L"Notepad");
    return windows.empty() ? nullptr : windows.front();
}

// The text that Notepad shows, line ends as in the file.
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

TEST_F(OpenSettingsTest, EditorIsTheSystemsOwnWithTheQuotedPathAlone) {
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
    // The shell puts the program's path in quotes or not.
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

TEST_F(OpenSettingsTest, BlanksInThePathDoNotSplitIt) {
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

TEST_F(OpenSettingsTest, FolderInPlaceOfTheFileIsHandedToNotepadAsItIs) {
    ASSERT_NE(CreateDirectoryW(DataFolder().c_str(), nullptr), FALSE);
    ASSERT_NE(CreateDirectoryW(SettingsPath().c_str(), nullptr), FALSE);
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    EXPECT_TRUE(WaitUntil([] { return NotepadProcesses().size() == 1; }));
    EXPECT_EQ(GetFileAttributesW(SettingsPath().c_str()) & FILE_ATTRIBUTE_DIRECTORY,
              static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY));
}

TEST_F(OpenSettingsTest, NothingOpensWithoutASettingsPath) {
    const ShellFolderOverride away(L"AppData", L"Q:\\nowhere");
    const Program program = StartedProgram();
    ASSERT_TRUE(program.SendCommand(OpenSettingsCommand));
    EXPECT_TRUE(NotepadProcesses().empty());
}

TEST_F(OpenSettingsTest, ProgramGoesOnAndMayEndWhileNotepadIsOpen) {
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
