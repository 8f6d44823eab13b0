#include "base/process.h"

#include <array>

namespace morvane {
namespace {

ProcessState process;

}  // namespace

ProcessState& Process() {
    return process;
}

std::wstring ProgramPath() {
    std::array<wchar_t, MAX_PATH> path{};
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), MAX_PATH);
    // A length of the whole buffer means that the path was cut.
    return length < MAX_PATH ? std::wstring(path.data(), length) : std::wstring();
}

}  // namespace morvane
