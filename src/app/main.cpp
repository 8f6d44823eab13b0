#include <string>

#include "app/command_line.h"
#include "app/control_window.h"
#include "app/exit_codes.h"
#include "app/process.h"
#include "base/owners.h"
#include "base/win.h"
#include "i18n/language.h"
#include "pin/enforcement.h"
#include "shell/data_removal.h"
#include "shell/startup_shortcut.h"

namespace morvane {

namespace {

// "Local\" keeps to the sign-in session: another session may run an instance of its own.
constexpr wchar_t SingleInstanceMutex[] = L"Local\\Morvane_SingleInstance";

ExitCode ExitCodeOf(bool succeeded) {
    return succeeded ? ExitSuccess : ExitSwitchFailed;
}

// The switches take no mutex and show nothing: they may run beside an instance.
ExitCode RunSwitch(StartMode mode) {
    switch (mode) {
        case StartMode::InstallStartup:
            return ExitCodeOf(InstallStartupShortcut());
        case StartMode::RemoveStartup:
            RemoveStartupShortcut();
            return ExitSuccess;
        case StartMode::RemoveData:
            return ExitCodeOf(RemoveAllData());
        case StartMode::Run:
            break;
    }
    return ExitSuccess;
}

// Ends with the quit message, whose parameter is not the exit code, or with an error.
void RunMessageLoop(HWND controlWindow) {
    MSG message{};
    // The window is asked for as well: the quit message may have ended the loop of a dialog that
    // was open, and no second one comes.
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
    // Stored only now, although the window has lived through its creation handling already.
    process.controlWindow = CreateControlWindow(process.instance);
    const bool created = process.controlWindow != nullptr;
    if (created) {
        RunMessageLoop(process.controlWindow);
    }
    // Nothing is left to release, unless the window was destroyed by a message that another program
    // sent while a pass waited for a window: the rest of that pass has then pinned again.
    ReleaseAll();
    return created ? ExitSuccess : ExitWindowFailed;
}

ExitCode Main(HINSTANCE instance, const wchar_t* arguments) {
    Process().instance = instance;
    // Libraries that are loaded from here on, the shell's among them, come from the system folder:
    // a file of the same name beside a portable program is not looked at.
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    InitLanguage();
    const std::wstring commandLine = arguments != nullptr ? arguments : L"";

    // Before COM, so that it is closed after COM has been left.
    KernelHandle mutex;
    const ComApartment com;
    if (!com) {
        return ExitComFailed;
    }
    const StartMode mode = ParseCommandLine(commandLine);
    if (mode != StartMode::Run) {
        return RunSwitch(mode);
    }
    mutex.reset(CreateMutexW(nullptr, TRUE, SingleInstanceMutex));
    const bool alreadyRunning = mutex && GetLastError() == ERROR_ALREADY_EXISTS;
    if (alreadyRunning || !mutex) {
        // Deliberate: without its mutex the program does not run, and it says nothing about it.
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
