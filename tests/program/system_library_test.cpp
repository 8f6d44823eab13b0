// A portable program may lie in a folder that other files get into, such as downloads. Libraries
// there must not be loaded, whether the program asks for them or a library of the system does.
//
// Shown with a library that the program asks for by name, and with a name that no system has. Other
// names show nothing here: what is loaded already is not looked for again, and Wine loads what its
// own libraries import from anywhere. docs/windows-checklist.md has a step for those that Windows
// may load.

#include <bit>

#include "program/menu_scene.h"
#include "support/child_process.h"
#include "support/notepad.h"

namespace morvane::test {
namespace {

constexpr const wchar_t* ProgramName = L"Morvane.exe";
constexpr const wchar_t* UnknownLibrary = L"planted.dll";
constexpr const wchar_t* PlantedLibraries[] = {L"dwmapi.dll", UnknownLibrary};

std::wstring PortableFolder() {
    return TestPath(L"PortableProgram");
}

std::wstring PortableFile(const std::wstring& name) {
    return PortableFolder() + L"\\" + name;
}

// What a planted library leaves when it is loaded.
std::wstring MarkOf(const std::wstring& library) {
    return PortableFile(library + L".loaded");
}

// Loads a library as the system's own do inside the program: by its bare name, without a flag.
void LoadInside(const Program& program, const std::wstring& name) {
    const KernelHandle process(OpenProcess(PROCESS_CREATE_THREAD | PROCESS_QUERY_INFORMATION |
                                               PROCESS_VM_OPERATION | PROCESS_VM_READ |
                                               PROCESS_VM_WRITE,
                                           FALSE, program.ProcessId()));
    const SIZE_T size = (name.size() + 1) * sizeof(wchar_t);
    void* const text =
        VirtualAllocEx(process.get(), nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    ASSERT_NE(WriteProcessMemory(process.get(), text, name.c_str(), size, nullptr), FALSE);
    // This library of the system is at the same place in every process.
    const auto load = std::bit_cast<LPTHREAD_START_ROUTINE>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "LoadLibraryW"));
    const KernelHandle thread(
        CreateRemoteThread(process.get(), nullptr, 0, load, text, 0, nullptr));
    ASSERT_TRUE(thread);
    ASSERT_TRUE(WaitForObject(thread.get()));
}

class SystemLibraryTest : public ProgramTest {
protected:
    // Runs the program among planted libraries, opens everything it can show and makes it write
    // everything it can write. Returns the planted libraries that were loaded at any time.
    static std::vector<std::wstring> LoadedLibraries(const wchar_t* executable,
                                                     const Environment& changes) {
        ResetProfile();  // with what an earlier run has planted and left
        CreateDirectoryW(PortableFolder().c_str(), nullptr);
        CopyFileW(RequiredPath(executable).c_str(), PortableFile(ProgramName).c_str(), FALSE);
        for (const wchar_t* const library : PlantedLibraries) {
            EXPECT_NE(CopyFileW(RequiredPath(L"MORVANE_TEST_PLANTED_LIBRARY").c_str(),
                                PortableFile(library).c_str(), FALSE),
                      FALSE);
        }
        const Program program = Program::FromFile(PortableFile(ProgramName), L"", changes);
        EXPECT_NE(program.WaitForControlWindow(), nullptr);
        EXPECT_NE(OpenMenu(program), nullptr);
        EXPECT_NE(OpenSubmenu(program, Item::AddRemove, Way::Keyboard), nullptr);
        EXPECT_TRUE(DismissMenu(program));
        EXPECT_TRUE(program.SendCommand(StartWithWindowsCommand));
        EXPECT_TRUE(PathExists(StartupShortcut()));
        EXPECT_TRUE(program.SendCommand(OpenSettingsCommand));
        EXPECT_EQ(NotepadProcesses().size(), 1U);
        EndNotepads();
        const HWND dialog = OpenAbout(program);
        EXPECT_NE(dialog, nullptr);
        PostMessageW(dialog, WM_CLOSE, 0, 0);
        EXPECT_TRUE(AboutCloses(program));
        LoadInside(program, UnknownLibrary);
        EXPECT_EQ(program.ExitByCommand(), 0U);
        std::vector<std::wstring> loaded;
        for (const wchar_t* const library : PlantedLibraries) {
            if (PathExists(MarkOf(library))) {
                loaded.emplace_back(library);
            }
        }
        return loaded;
    }
};

TEST_F(SystemLibraryTest, LibrariesBesideTheProgramAreNotLoaded) {
    EXPECT_EQ(LoadedLibraries(L"MORVANE_TEST_PROGRAM", {}), std::vector<std::wstring>());
}

// Also shows that the test above can fail.
TEST_F(SystemLibraryTest, EachPrecautionKeepsOffWhatIsAskedForItsWay) {
    const struct {
        const wchar_t* faults;
        std::vector<std::wstring> loaded;
    } cases[] = {
        {L"LoadLibraryExW=1", {}},
        {L"SetDefaultDllDirectories", {UnknownLibrary}},
        {L"SetDefaultDllDirectories,LoadLibraryExW=1",
         {std::begin(PlantedLibraries), std::end(PlantedLibraries)}},
    };
    for (const auto& [faults, loaded] : cases) {
        EXPECT_EQ(LoadedLibraries(L"MORVANE_TEST_FAULTY_PROGRAM", {{L"MORVANE_FAULTS", faults}}),
                  loaded)
            << faults;
    }
}

}  // namespace
}  // namespace morvane::test
