#pragma once

#include <string>

namespace morvane {

// Deletes a folder with everything in it: read-only files and folders too, links of every kind
// without following them. Stops at the first thing that cannot be deleted and returns false; a
// folder that does not exist counts as deleted.
[[nodiscard]] bool RemoveTree(const std::wstring& folder);

// The form of a path that the platform takes as it stands, without a limit of length and without
// dropping blanks and dots at the end of a name. Empty when the platform cannot resolve the path.
[[nodiscard]] std::wstring VerbatimPath(const std::wstring& path);

}  // namespace morvane
