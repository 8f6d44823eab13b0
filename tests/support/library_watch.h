#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/win.h"

namespace morvane::test {

// Attaches to a running process as a debugger and records the file of every library that is
// already loaded or gets loaded while the watch lives. The module list would miss a library that is
// unloaded again at once. The process keeps running afterwards. Throws std::runtime_error if the
// process cannot be watched.
class LibraryWatch {
public:
    explicit LibraryWatch(DWORD processId);
    LibraryWatch(const LibraryWatch&) = delete;
    LibraryWatch& operator=(const LibraryWatch&) = delete;
    LibraryWatch(LibraryWatch&&) = delete;
    LibraryWatch& operator=(LibraryWatch&&) = delete;
    ~LibraryWatch();

    // Full paths as GetFinalPathNameByHandleW returns them, in load order.
    [[nodiscard]] std::vector<std::wstring> Files() const;

    struct Shared;

private:
    std::unique_ptr<Shared> shared_;
};

}  // namespace morvane::test
