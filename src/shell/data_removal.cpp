#include "shell/data_removal.h"

#include <string>

#include "base/win.h"
#include "shell/data_folder.h"
#include "shell/remove_tree.h"
#include "shell/startup_shortcut.h"

namespace morvane {

bool RemoveAllData() {
    // First, and whatever happens next: the program must not start again by itself.
    RemoveStartupShortcut();
    // Creates the folder when it did not exist; it is deleted again below. Accepted as it is.
    const std::wstring folder = GetDataFolder();
    // Nothing outside a folder of the program's own name is ever deleted.
    if (!IsOwnDataFolder(folder)) {
        return false;
    }
    return RemoveTree(folder);
}

}  // namespace morvane
