#include "shell/data_removal.h"

#include <string>

#include "base/win.h"
#include "shell/data_folder.h"
#include "shell/remove_tree.h"
#include "shell/startup_shortcut.h"

namespace morvane {

bool RemoveAllData() {
    // First, so that the program does not start again even if the rest fails.
    RemoveStartupShortcut();
    // Creates a missing folder, which is deleted again below.
    const std::wstring folder = GetDataFolder();
    // Nothing outside a folder of the program's own name is ever deleted.
    if (!IsOwnDataFolder(folder)) {
        return false;
    }
    return RemoveTree(folder);
}

}  // namespace morvane
