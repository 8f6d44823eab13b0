#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/win.h"

namespace morvane::test {

// Watches a running process as a debugger does and notes the file of every library that it has
// loaded already or loads while the watch lives, also of one that it lets go again at once: the
// list of modules shows only what is loaded at the moment. The process runs on afterwards. Throws
// std::runtime_error when the process cannot be watched.
class LibraryWatch {
public:
    explicit LibraryWatch(DWORD processId);
    LibraryWatch(const LibraryWatch&) = delete;
    LibraryWatch& operator=(const LibraryWatch&) = delete;
    LibraryWatch(LibraryWatch&&) = delete;
    LibraryWatch& operator=(LibraryWatch&&) = delete;
    ~LibraryWatch();

    // Full paths as GetFinalPathNameByHandleW gives them, in the order of loading.
    [[nodiscard]] std::vector<std::wstring> Files() const;

    struct Shared;

private:
    std::unique_ptr<Shared> shared_;
};

}  // namespace morvane::test
