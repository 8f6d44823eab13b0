#include "support/import_table.h"

#include <cstddef>
#include <cstring>

#include "base/win.h"

namespace morvane::test {

namespace {

template <typename Type>
Type* At(std::byte* base, std::size_t offset) {
    return reinterpret_cast<Type*>(base + offset);
}

std::byte* ImageBase() {
    return reinterpret_cast<std::byte*>(GetModuleHandleW(nullptr));
}

// The null-terminated list of libraries that the executable imports from.
IMAGE_IMPORT_DESCRIPTOR* ImportDescriptors(std::byte* base) {
    const auto* const dos = At<IMAGE_DOS_HEADER>(base, 0);
    const auto* const headers = At<IMAGE_NT_HEADERS>(base, static_cast<std::size_t>(dos->e_lfanew));
    const IMAGE_DATA_DIRECTORY& directory =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    return directory.VirtualAddress != 0
               ? At<IMAGE_IMPORT_DESCRIPTOR>(base, directory.VirtualAddress)
               : nullptr;
}

// Calls visit(function) for each function that is imported by name from the library.
template <typename Visit>
void ForEachFunction(std::byte* base, const IMAGE_IMPORT_DESCRIPTOR& library, Visit visit) {
    const auto* names = At<IMAGE_THUNK_DATA>(base, library.OriginalFirstThunk);
    auto* entry = At<void*>(base, library.FirstThunk);
    for (; names->u1.AddressOfData != 0; ++names, ++entry) {
        if (!IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) {
            visit(ImportedFunction{At<IMAGE_IMPORT_BY_NAME>(base, names->u1.AddressOfData)->Name,
                                   entry});
        }
    }
}

// Calls visit(base of the image, library) for each library.
template <typename Visit>
void ForEachLibrary(Visit visit) {
    std::byte* const base = ImageBase();
    const IMAGE_IMPORT_DESCRIPTOR* library = ImportDescriptors(base);
    for (; library != nullptr && library->Name != 0; ++library) {
        visit(base, *library);
    }
}

}  // namespace

void** FindImport(std::string_view name) {
    void** found = nullptr;
    ForEachLibrary([&](std::byte* base, const IMAGE_IMPORT_DESCRIPTOR& library) {
        ForEachFunction(base, library, [&](const ImportedFunction& function) {
            if (found == nullptr && function.name == name) {
                found = function.entry;
            }
        });
    });
    return found;
}

std::vector<ImportedFunction> ImportsFrom(const char* library) {
    std::vector<ImportedFunction> found;
    ForEachLibrary([&](std::byte* base, const IMAGE_IMPORT_DESCRIPTOR& descriptor) {
        if (_stricmp(At<const char>(base, descriptor.Name), library) == 0) {
            ForEachFunction(base, descriptor,
                            [&](const ImportedFunction& function) { found.push_back(function); });
        }
    });
    return found;
}

void* ExchangeImport(void** entry, void* function) {
    // The loader leaves the table read-only.
    DWORD protection = 0;
    VirtualProtect(static_cast<void*>(entry), sizeof(*entry), PAGE_READWRITE, &protection);
    void* const previous = *entry;
    *entry = function;
    VirtualProtect(static_cast<void*>(entry), sizeof(*entry), protection, &protection);
    return previous;
}

}  // namespace morvane::test
