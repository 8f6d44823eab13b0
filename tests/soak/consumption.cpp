#include "soak/consumption.h"

#include <stdexcept>
#include <vector>

#include "base/owners.h"
#include "support/room.h"

#include <psapi.h>

namespace morvane::test {
namespace {

// A file that happens to be open, and an event or two of the runtime.
constexpr std::size_t HandlesThatComeAndGo = 3;
constexpr std::size_t KilobytesThatComeAndGo = 64;
constexpr std::size_t MenusThatComeAndGo = 24;

// Handles are multiples of four, and lie close together.
constexpr ULONG_PTR HandleStep = 4;
constexpr ULONG_PTR LongestGap = HandleStep * 1024;

std::size_t MenuRoom() {
    const std::size_t room = FillMenuRoom().size();
    if (room == 0) {
        throw std::runtime_error("the session has no room for menus");
    }
    return room;
}

std::string Grown(const char* what, std::size_t before, std::size_t after, std::size_t allowed) {
    return after > before + allowed ? std::string(what) + " grew from " + std::to_string(before) +
                                          " to " + std::to_string(after) + "; "
                                    : "";
}

}  // namespace

std::size_t PrivateKilobytes(DWORD processId) {
    const KernelHandle process(
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId));
    PROCESS_MEMORY_COUNTERS counters{};
    if (!process || GetProcessMemoryInfo(process.get(), &counters, sizeof(counters)) == FALSE ||
        counters.PagefileUsage == 0) {
        throw std::runtime_error("cannot measure the memory of the program");
    }
    return counters.PagefileUsage / 1024;
}

std::size_t KernelHandles(DWORD processId) {
    const KernelHandle process(
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_DUP_HANDLE, FALSE, processId));
    DWORD told = 0;
    if (GetProcessHandleCount(process.get(), &told) != FALSE && told > 0) {
        return told;
    }
    // Wine 8.0 tells of none. There is one wherever a duplicate can be made.
    std::size_t count = 0;
    ULONG_PTR end = LongestGap;
    for (ULONG_PTR value = HandleStep; value < end; value += HandleStep) {
        HANDLE copy = nullptr;
        if (DuplicateHandle(process.get(), reinterpret_cast<HANDLE>(value), GetCurrentProcess(),
                            &copy, 0, FALSE, DUPLICATE_SAME_ACCESS) != FALSE) {
            CloseHandle(copy);
            ++count;
            end = value + LongestGap;
        }
    }
    if (count == 0) {
        throw std::runtime_error("found no handle of the program");
    }
    return count;
}

Consumption MeasureConsumption(DWORD processId) {
    return {KernelHandles(processId), PrivateKilobytes(processId), MenuRoom()};
}

std::string Growth(const Consumption& before, const Consumption& after) {
    return Grown("kernel handles", before.kernelHandles, after.kernelHandles,
                 HandlesThatComeAndGo) +
           Grown("private kilobytes", before.privateKilobytes, after.privateKilobytes,
                 KilobytesThatComeAndGo) +
           // Room shrinks as menus grow, hence the reversed arguments.
           Grown("menus (room at the end and before)", after.menuRoom, before.menuRoom,
                 MenusThatComeAndGo);
}

}  // namespace morvane::test
