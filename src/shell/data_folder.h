#pragma once

// Where the program keeps its data. The empty path stands for "there is none".

#include <string>
#include <string_view>

namespace morvane {

// The program's own folder under the user's roaming application data, created when it is missing;
// empty when there is no application-data folder or when a link stands in the folder's place.
[[nodiscard]] std::wstring GetDataFolder();

// The path of config.txt in the data folder; creates the folder like GetDataFolder.
[[nodiscard]] std::wstring GetSettingsPath();

// Whether a path may be taken for the data folder and be deleted: its last part is the folder's
// name, without regard to ASCII case, and it is not a link.
[[nodiscard]] bool IsOwnDataFolder(std::wstring_view path);

}  // namespace morvane
