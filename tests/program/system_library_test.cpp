// A portable program may lie in a folder that other files get into, such as downloads. Libraries
// there must not be loaded.

#include <algorithm>
#include <array>
#include <iterator>
#include <set>
#include <utility>

#include "program/menu_scene.h"
#include "program/notepad.h"
#include "support/child_process.h"
#include "support/library_watch.h"

// Needs the declarations above.
#include <psapi.h>

namespace morvane::test {
namespace {

constexpr const wchar_t* ProgramName = L"Morvane.exe";

// Windows loads these from its own list of known libraries (KnownDLLs in the registry, and what
// those import) and ignores planted files of these names. Wine has no such list, so they are left
// out here. The tests of the finished program check that it imports no others at load time.
constexpr std::wstring_view KnownLibraries[] = {
    L"advapi32.dll", L"clbcatq.dll",  L"coml2.dll",   L"combase.dll",    L"gdi32.dll",
    L"imm32.dll",    L"kernel32.dll", L"msctf.dll",   L"msvcrt.dll",     L"ole32.dll",
    L"oleaut32.dll", L"rpcrt4.dll",   L"sechost.dll", L"shcore.dll",     L"shell32.dll",
    L"shlwapi.dll",  L"user32.dll",   L"ntdll.dll",   L"kernelbase.dll", L"win32u.dll",
    L"ucrtbase.dll",
};

// Wine's own libraries import these from anywhere, so they are planted once the program runs. Under
// Wine they are loaded by then and found by name when asked for again; only on Windows could they
// come from the wrong place.
constexpr std::wstring_view ImportedByWine[] = {L"version.dll", L"zlib1.dll"};

// Wine's uxtheme imports these only when it draws, ignoring the program's library search settings,
// so they are not planted at all. docs/windows-checklist.md covers them on Windows.
constexpr std::wstring_view ImportedLateByWine[] = {L"msimg32.dll"};

// What Windows's own libraries load by name in programs like this one, beyond what Wine's load. A
// name that Wine's libraries never ask for cannot fail here, but it can on Windows.
constexpr const wchar_t* LoadedByWindows[] = {
    L"apphelp.dll",  L"bcrypt.dll",   L"cryptbase.dll",     L"cryptsp.dll",
    L"edputil.dll",  L"iertutil.dll", L"linkinfo.dll",      L"kernel.appcore.dll",
    L"netapi32.dll", L"ntmarta.dll",  L"ntshrui.dll",       L"profapi.dll",
    L"propsys.dll",  L"rsaenh.dll",   L"sspicli.dll",       L"textshaping.dll",
    L"urlmon.dll",   L"userenv.dll",  L"windowscodecs.dll", L"windows.storage.dll",
    L"wldp.dll",     L"xmllite.dll",
};

// The copy for libraries that Wine does not have.
constexpr const wchar_t* AnyLibrary = L"dwmapi.dll";

std::wstring PortableFolder() {
    return TestPath(L"PortableProgram");
}

std::wstring PortableFile(const std::wstring& name) {
    return PortableFolder() + L"\\" + name;
}

bool EndsWith(std::wstring_view text, std::wstring_view end) {
    return text.size() >= end.size() &&
           CompareStringOrdinal(text.data() + (text.size() - end.size()),
                                static_cast<int>(end.size()), end.data(),
                                static_cast<int>(end.size()), TRUE) == CSTR_EQUAL;
}

std::vector<std::wstring> FromPortableFolder(std::vector<std::wstring> files) {
    const auto elsewhere = [](std::wstring_view file) {
        const std::size_t slash = file.find_last_of(L'\\');
        return slash == std::wstring_view::npos ||
               !EndsWith(file.substr(0, slash), L"\\PortableProgram");
    };
    files.erase(std::remove_if(files.begin(), files.end(), elsewhere), files.end());
    return files;
}

// Puts a copy of the system's library beside the program. The copy lacks the mark by which Wine
// knows its own libraries, as Wine would load the original for a marked one.
bool Plant(const std::wstring& name) {
    constexpr std::string_view Mark = "Wine builtin DLL";
    std::array<wchar_t, MAX_PATH> system{};
    GetSystemDirectoryW(system.data(), MAX_PATH);
    const std::wstring folder = std::wstring(system.data()) + L"\\";
    std::optional<std::string> bytes = ReadFileBytes(folder + name);
    if (!bytes) {
        bytes = ReadFileBytes(folder + AnyLibrary);
    }
    if (!bytes) {
        return false;
    }
    const std::size_t mark = bytes->find(Mark);
    if (mark != std::string::npos) {
        bytes->replace(mark, Mark.size(), Mark.size(), ' ');
    }
    return WriteFileBytes(PortableFile(name), *bytes);
}

std::wstring NameOf(const std::wstring& file) {
    std::wstring name = file.substr(file.find_last_of(L'\\') + 1);
    CharLowerW(name.data());
    return name;
}

std::vector<std::wstring> LoadedModules(DWORD processId) {
    const KernelHandle process(
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId));
    std::array<HMODULE, 512> modules{};
    DWORD bytes = 0;
    if (K32EnumProcessModules(process.get(), modules.data(), sizeof(modules), &bytes) == FALSE) {
        return {};
    }
    std::vector<std::wstring> files;
    for (std::size_t i = 0; i < std::min(modules.size(), bytes / sizeof(HMODULE)); ++i) {
        std::array<wchar_t, MAX_PATH> path{};
        K32GetModuleFileNameExW(process.get(), modules.at(i), path.data(), MAX_PATH);
        files.emplace_back(path.data());
    }
    return files;
}

// Opens and closes everything the program can show, and makes it write everything it can write.
// Returns every library loaded at any time, even if unloaded again.
std::vector<std::wstring> LibrariesLoadedAtAnyTime(const Program& program) {
    const LibraryWatch watch(program.ProcessId());
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
    std::vector<std::wstring> files = watch.Files();
    for (std::wstring& file : LoadedModules(program.ProcessId())) {
        files.push_back(std::move(file));
    }
    PostMessageW(dialog, WM_CLOSE, 0, 0);
    EXPECT_TRUE(AboutCloses(program));
    return files;
}

class SystemLibraryTest : public ProgramTest {
protected:
    void SetUp() override {
        ProgramTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        CreateDirectoryW(PortableFolder().c_str(), nullptr);
        ASSERT_NE(CopyFileW(RequiredPath(L"MORVANE_TEST_PROGRAM").c_str(),
                            PortableFile(ProgramName).c_str(), FALSE),
                  FALSE);
    }

    void TearDown() override {
        if (IsSkipped()) {
            return;
        }
        for (const std::wstring& name : planted_) {
            DeleteFileW(PortableFile(name).c_str());
        }
        DeleteFileW(PortableFile(ProgramName).c_str());
        RemoveDirectoryW(PortableFolder().c_str());
    }

    void PlantAll(const std::set<std::wstring>& names) {
        for (const std::wstring& name : names) {
            planted_.push_back(name);
            EXPECT_TRUE(Plant(name)) << name;
        }
    }

private:
    std::vector<std::wstring> planted_;
};

TEST_F(SystemLibraryTest, LibrariesBesideTheProgramAreNotLoaded) {
    std::set<std::wstring> names(std::begin(LoadedByWindows), std::end(LoadedByWindows));
    {
        const Program program = StartedProgram();
        for (const std::wstring& file : LibrariesLoadedAtAnyTime(program)) {
            names.insert(NameOf(file));
        }
        ASSERT_EQ(program.ExitByCommand(), 0U);
    }
    RemoveDataFolder();
    EmptyStartupFolder();
    names.erase(L"morvane.exe");
    for (const std::wstring_view known : KnownLibraries) {
        names.erase(std::wstring(known));
    }
    // Unloaded right after use, hence not among the modules.
    EXPECT_TRUE(names.contains(L"dwmapi.dll"));
    EXPECT_TRUE(names.contains(L"uxtheme.dll"));
    std::set<std::wstring> afterStart;
    for (const std::wstring_view imported : ImportedByWine) {
        names.erase(std::wstring(imported));
        afterStart.insert(std::wstring(imported));
    }

    for (const std::wstring_view imported : ImportedLateByWine) {
        names.erase(std::wstring(imported));
    }

    PlantAll(names);
    const Program program = Program::FromFile(PortableFile(ProgramName));
    ASSERT_NE(program.WaitForControlWindow(), nullptr);
    PlantAll(afterStart);
    const std::vector<std::wstring> files = LibrariesLoadedAtAnyTime(program);
    EXPECT_TRUE(std::any_of(files.begin(), files.end(), [](const std::wstring& file) {
        return NameOf(file) == L"dwmapi.dll";
    }));
    EXPECT_EQ(FromPortableFolder(files), std::vector<std::wstring>{PortableFile(ProgramName)});
    EXPECT_EQ(program.ExitByCommand(), 0U);
}

// Shows that the test above can fail: without its precautions the same program loads the planted
// library.
TEST_F(SystemLibraryTest, PlantedLibraryIsLoadedByACarelessProgram) {
    ASSERT_NE(CopyFileW(RequiredPath(L"MORVANE_TEST_FAULTY_PROGRAM").c_str(),
                        PortableFile(ProgramName).c_str(), FALSE),
              FALSE);
    PlantAll({AnyLibrary});
    const Program program =
        Program::FromFile(PortableFile(ProgramName), L"",
                          {{L"MORVANE_FAULTS", L"SetDefaultDllDirectories,LoadLibraryExW=1"}});
    ASSERT_NE(program.WaitForControlWindow(), nullptr);
    const std::vector<std::wstring> files = FromPortableFolder(LibrariesLoadedAtAnyTime(program));
    EXPECT_TRUE(std::any_of(files.begin(), files.end(),
                            [](const std::wstring& file) { return NameOf(file) == AnyLibrary; }));
    EXPECT_EQ(program.ExitByCommand(), 0U);
}

}  // namespace
}  // namespace morvane::test
