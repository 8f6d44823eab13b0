// Installing the shortcut when the shell link object refuses a step.

#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <string>

#include "base/win_shell.h"
#include "shell/startup_shortcut.h"
#include "support/import_patch.h"
#include "support/test_environment.h"

namespace morvane::test {
namespace {

enum class Step { Create, SetPath, SetDescription, QueryInterface, Save, None };
constexpr Step AllSteps[] = {Step::Create,         Step::SetPath, Step::SetDescription,
                             Step::QueryInterface, Step::Save,    Step::None};

// The step that fails, the number of steps taken, and the number of references held.
struct Scene {
    Step failing = Step::None;
    int steps = 0;
    int references = 0;
    std::wstring savedAs;
};

Scene scene;

HRESULT Take(Step step) {
    ++scene.steps;
    return step == scene.failing ? E_ACCESSDENIED : S_OK;
}

// Indexes in the function tables, in the order of the interfaces.
constexpr std::size_t QueryInterfacePlace = 0;
constexpr std::size_t ReleasePlace = 2;
constexpr std::size_t LinkSetDescriptionPlace = 7;
constexpr std::size_t LinkSetPathPlace = 20;
constexpr std::size_t LinkPlaces = 21;
constexpr std::size_t FileSavePlace = 6;
constexpr std::size_t FilePlaces = 9;

// The memory layout of a COM object: the address of its function table. The table has only the
// functions that the program calls.
template <std::size_t Size>
struct ShellObject {
    const std::array<void*, Size>* functions;
};

template <typename Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

HRESULT STDMETHODCALLTYPE SetPath(void* /*link*/, LPCWSTR /*path*/) {
    return Take(Step::SetPath);
}

HRESULT STDMETHODCALLTYPE SetDescription(void* /*link*/, LPCWSTR /*text*/) {
    return Take(Step::SetDescription);
}

HRESULT STDMETHODCALLTYPE Save(void* /*file*/, LPCOLESTR path, BOOL /*remember*/) {
    scene.savedAs = path;
    return Take(Step::Save);
}

ULONG STDMETHODCALLTYPE Release(void* /*object*/) {
    return static_cast<ULONG>(--scene.references);
}

// Returns the object, with a reference for the caller, if the step succeeds.
template <typename Object>
HRESULT HandOut(Step step, Object& object, void** result) {
    const HRESULT answer = Take(step);
    *result = nullptr;
    if (SUCCEEDED(answer)) {
        ++scene.references;
        *result = &object;
    }
    return answer;
}

HRESULT STDMETHODCALLTYPE AskForFile(void* /*link*/, REFIID id, void** result) {
    static const auto functions = [] {
        std::array<void*, FilePlaces> table{};
        table[ReleasePlace] = Address(Release);
        table[FileSavePlace] = Address(Save);
        return table;
    }();
    static ShellObject<FilePlaces> file{&functions};
    EXPECT_TRUE(IsEqualGUID(id, IID_IPersistFile));
    return HandOut(Step::QueryInterface, file, result);
}

HRESULT WINAPI CreateLink(REFCLSID type, LPUNKNOWN /*outer*/, DWORD /*context*/, REFIID id,
                          LPVOID* result) {
    static const auto functions = [] {
        std::array<void*, LinkPlaces> table{};
        table[QueryInterfacePlace] = Address(AskForFile);
        table[ReleasePlace] = Address(Release);
        table[LinkSetDescriptionPlace] = Address(SetDescription);
        table[LinkSetPathPlace] = Address(SetPath);
        return table;
    }();
    static ShellObject<LinkPlaces> link{&functions};
    EXPECT_TRUE(IsEqualGUID(type, CLSID_ShellLink));
    EXPECT_TRUE(IsEqualGUID(id, IID_IShellLinkW));
    return HandOut(Step::Create, link, result);
}

TEST(ShortcutFaultsTest, EveryRefusedStepFailsTheInstallationAndKeepsNoReferences) {
    MORVANE_REQUIRE_DISPOSABLE_PROFILE();
    const ImportPatch<decltype(&CoCreateInstance)> patch("CoCreateInstance", CreateLink);
    int steps = 0;
    for (const Step failing : AllSteps) {
        scene = Scene{};
        scene.failing = failing;
        const bool isWhole = failing == Step::None;
        EXPECT_EQ(InstallStartupShortcut(), isWhole) << steps;
        // No step follows the failed one.
        EXPECT_EQ(scene.steps, isWhole ? steps : ++steps);
        EXPECT_EQ(scene.references, 0) << steps;
    }
    EXPECT_EQ(scene.savedAs, StartupShortcut());
}

TEST(ShortcutFaultsTest, PathThatIsTooLongFailsTheInstallation) {
    MORVANE_REQUIRE_DISPOSABLE_PROFILE();
    ResetProfile();
    const ImportPatch<decltype(&GetModuleFileNameW)> patch("GetModuleFileNameW", CutPath);
    EXPECT_FALSE(InstallStartupShortcut());
    EXPECT_FALSE(IsStartupEnabled());
}

}  // namespace
}  // namespace morvane::test
