// A portable program lies in a folder that other files get into, downloads for example: libraries
// there must not become part of it.

#include <algorithm>
#include <array>

#include "program/menu_scene.h"
#include "support/child_process.h"
#include "support/library_watch.h"

// Needs the declarations above.
#include <psapi.h>

namespace morvane::test {
namespace {

constexpr const wchar_t* ProgramName = L"Morvane.exe";

// Wine's own user32 imports the version library, wherever it lies: that one is put beside the
// program once the program runs. By then it is loaded already under Wine, so that asking for it
// again finds it under its name; only on Windows can it come from the wrong place.
constexpr const wchar_t* BeforeStart[] = {L"dwmapi.dll", L"uxtheme.dll"};
constexpr const wchar_t* AfterStart[] = {L"version.dll"};

std::wstring PortableFolder() {
    return RoamingFolder() + L"\\PortableProgram";
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

// Puts a copy of the system's library beside the program, without the mark by which Wine knows
// its own libraries: it would load the original in place of a marked copy.
bool Plant(const wchar_t* name) {
    constexpr std::string_view Mark = "Wine builtin DLL";
    std::array<wchar_t, MAX_PATH> system{};
    GetSystemDirectoryW(system.data(), MAX_PATH);
    std::string bytes =
        ReadFileBytes(std::wstring(system.data()) + L"\\" + name).value_or(std::string());
    const std::size_t mark = bytes.find(Mark);
    if (mark != std::string::npos) {
        bytes.replace(mark, Mark.size(), Mark.size(), ' ');
    }
    return !bytes.empty() && WriteFileBytes(PortableFile(name), bytes);
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
        for (const wchar_t* name : BeforeStart) {
            DeleteFileW(PortableFile(name).c_str());
        }
        for (const wchar_t* name : AfterStart) {
            DeleteFileW(PortableFile(name).c_str());
        }
        DeleteFileW(PortableFile(ProgramName).c_str());
        RemoveDirectoryW(PortableFolder().c_str());
    }
};

TEST_F(SystemLibraryTest, LibrariesBesideTheProgramAreNotLoaded) {
    for (const wchar_t* name : BeforeStart) {
        ASSERT_TRUE(Plant(name));
    }
    const Program program = Program::FromFile(PortableFile(ProgramName));
    ASSERT_NE(program.WaitForControlWindow(), nullptr);
    for (const wchar_t* name : AfterStart) {
        ASSERT_TRUE(Plant(name));
    }
    const LibraryWatch watch(program.ProcessId());
    const HWND dialog = OpenAbout(program);
    ASSERT_NE(dialog, nullptr);

    // Let go again as soon as it has been used, hence not among the modules.
    const std::vector<std::wstring> watched = watch.Files();
    EXPECT_TRUE(std::any_of(watched.begin(), watched.end(), [](const std::wstring& file) {
        return EndsWith(file, L"\\dwmapi.dll");
    }));
    EXPECT_EQ(FromPortableFolder(watched), std::vector<std::wstring>{});
    EXPECT_EQ(FromPortableFolder(LoadedModules(program.ProcessId())),
              std::vector<std::wstring>{PortableFile(ProgramName)});

    PostMessageW(dialog, WM_CLOSE, 0, 0);
    EXPECT_TRUE(AboutCloses(program));
    EXPECT_EQ(program.ExitByCommand(), 0U);
}

}  // namespace
}  // namespace morvane::test
