#pragma once

// What several floors need of the file system.

#include <string>

#include "base/win.h"

namespace morvane {

// Locks nobody out: others may read, write, rename or delete the file while it is open here.
constexpr DWORD FullSharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Whether anything of that name exists, whatever it is.
[[nodiscard]] inline bool PathExists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace morvane
