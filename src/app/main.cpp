#include <optional>
#include <string>

#include "app/command_line.h"
#include "app/control_window.h"
#include "app/exit_codes.h"
#include "base/owners.h"
#include "base/process.h"
#include "base/win.h"
#include "i18n/language.h"
#include "pin/enforcement.h"
#include "shell/data_removal.h"
#include "shell/startup_shortcut.h"

namespace morvane {
namespace {

// "Local\" limits the name to the sign-in session: another session may run its own instance.
constexpr wchar_t SingleInstanceMutex[] = L"Local\\Morvane_SingleInstance";

// Takes no mutex and shows nothing: a switch may be given while an instance runs.
ExitCode RunSwitch(Switch given) {
    if (given == Switch::RemoveStartup) {
        RemoveStartupShortcut();
        return ExitSuccess;
    }
    const bool done = given == Switch::InstallStartup ? InstallStartupShortcut() : RemoveAllData();
    return done ? ExitSuccess : ExitSwitchFailed;
}

// The parameter of WM_QUIT is not the exit code. An error ends the loop too.
void RunMessageLoop(HWND controlWindow) {
    MSG message{};
    // A nested modal loop may have swallowed WM_QUIT: stop when the window is gone.
    while (IsWindow(controlWindow) != FALSE && GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

ExitCode RunInstance() {
    ProcessState& process = Process();
    if (!RegisterControlWindowClass(process.instance)) {
        return ExitClassFailed;
    }
    // Null until now: WM_CREATE has already been handled without it.
    process.controlWindow = CreateControlWindow(process.instance);
    const bool created = process.controlWindow != nullptr;
    if (created) {
        RunMessageLoop(process.controlWindow);
    }
    // Usually nothing is left to release. But the loop may have ended with an error, or another
    // program destroyed the window while a pass waited for a hung one, and the pass went on.
    ReleaseAll();
    return created ? ExitSuccess : ExitWindowFailed;
}

ExitCode Main(HINSTANCE instance, const wchar_t* arguments) {
    Process().instance = instance;
    // From here on a library named without a path loads from the system folder only.
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    InitLanguage();
    const std::wstring commandLine = arguments != nullptr ? arguments : L"";

    // Declared before COM, so that it is closed after CoUninitialize.
    KernelHandle mutex;
    const ComApartment com;
    if (!com) {
        return ExitComFailed;
    }
    if (const std::optional<Switch> given = ParseCommandLine(commandLine)) {
        return RunSwitch(*given);
    }
    mutex.reset(CreateMutexW(nullptr, TRUE, SingleInstanceMutex));
    const bool alreadyRunning = mutex && GetLastError() == ERROR_ALREADY_EXISTS;
    if (alreadyRunning || !mutex) {
        // Without the mutex nothing would stop a second instance from pinning against the first.
        mutex.reset();
        return ExitSuccess;
    }
    return RunInstance();
}

}  // namespace
}  // namespace morvane

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE /*previous*/, PWSTR commandLine, int /*show*/) {
    return morvane::Main(instance, commandLine);
}
