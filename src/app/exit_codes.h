#pragma once

namespace morvane {

// What the process returns, unless runtime/ ends it.
enum ExitCode : int {
    ExitSuccess = 0,  // also: another instance runs, or the mutex could not be created
    ExitComFailed = 1,
    ExitSwitchFailed = 2,
    ExitClassFailed = 3,
    ExitWindowFailed = 4,
};

}  // namespace morvane
