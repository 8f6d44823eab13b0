#include "soak/consumption.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "base/owners.h"
#include "base/system_library.h"
#include "support/room.h"

#include <psapi.h>

namespace morvane::test {
namespace {

// A file that happens to be open, and an event or two of the runtime.
constexpr std::size_t HandlesThatComeAndGo = 8;
constexpr std::size_t KilobytesThatComeAndGo = 256;
constexpr std::size_t MenusThatComeAndGo = 64;

// What the system returns for every open handle; the platform's headers do not declare it.
struct HandleEntry {
    void* object;
    ULONG_PTR processId;
    ULONG_PTR handle;
    ULONG grantedAccess;
    USHORT creatorBackTrace;
    USHORT objectType;
    ULONG attributes;
    ULONG reserved;
};
struct HandleTableHead {
    ULONG_PTR count;
    ULONG_PTR reserved;
};
constexpr ULONG ExtendedHandleInformation = 64;
constexpr auto TooShort = static_cast<LONG>(0xC0000004);  // STATUS_INFO_LENGTH_MISMATCH
using QuerySystemInformation = LONG(WINAPI*)(ULONG, void*, ULONG, ULONG*);

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
    const Module library = LoadSystemLibrary(L"ntdll.dll");
    const auto query = FindExport<QuerySystemInformation>(library, "NtQuerySystemInformation");
    if (query == nullptr) {
        throw std::runtime_error("ntdll has no NtQuerySystemInformation");
    }
    std::vector<HandleEntry> table(4096);
    ULONG needed = 0;
    const auto ask = [&] {
        return query(ExtendedHandleInformation, table.data(),
                     static_cast<ULONG>(table.size() * sizeof(HandleEntry)), &needed);
    };
    LONG status = ask();
    while (status == TooShort) {
        table.resize(table.size() * 2);
        status = ask();
    }
    if (status < 0) {
        throw std::runtime_error("cannot list the handles of the system");
    }
    HandleTableHead head{};
    std::memcpy(&head, table.data(), sizeof(head));
    std::size_t count = 0;
    const auto* const bytes = reinterpret_cast<const char*>(table.data()) + sizeof(head);
    for (std::size_t index = 0; index < head.count; ++index) {
        HandleEntry entry{};
        std::memcpy(&entry, bytes + index * sizeof(entry), sizeof(entry));
        count += entry.processId == processId ? 1 : 0;
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
