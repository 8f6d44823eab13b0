#include "support/import_patch.h"

#include <cstddef>
#include <stdexcept>

namespace morvane::test {

namespace {

template <typename Type>
Type* At(std::byte* base, std::size_t offset) {
    return reinterpret_cast<Type*>(base + offset);
}

std::byte* ImageBase() {
    return reinterpret_cast<std::byte*>(GetModuleHandleW(nullptr));
}

// The terminated list of the libraries that the executable imports from.
IMAGE_IMPORT_DESCRIPTOR* ImportDescriptors(std::byte* base) {
    const auto* const dos = At<IMAGE_DOS_HEADER>(base, 0);
    const auto* const headers = At<IMAGE_NT_HEADERS>(base, static_cast<std::size_t>(dos->e_lfanew));
    const IMAGE_DATA_DIRECTORY& directory =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    return directory.VirtualAddress != 0
               ? At<IMAGE_IMPORT_DESCRIPTOR>(base, directory.VirtualAddress)
               : nullptr;
}

std::vector<ImportedFunction> FunctionsOf(std::byte* base, const IMAGE_IMPORT_DESCRIPTOR& library) {
    std::vector<ImportedFunction> functions;
    const auto* names = At<IMAGE_THUNK_DATA>(base, library.OriginalFirstThunk);
    auto* entry = At<void*>(base, library.FirstThunk);
    for (; names->u1.AddressOfData != 0; ++names, ++entry) {
        if (!IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) {
            functions.push_back(
                {At<IMAGE_IMPORT_BY_NAME>(base, names->u1.AddressOfData)->Name, entry});
        }
    }
    return functions;
}

// Calls visit(library's name, its functions) for each library that the executable imports from.
template <typename Visit>
void ForEachLibrary(Visit visit) {
    std::byte* const base = ImageBase();
    const IMAGE_IMPORT_DESCRIPTOR* library = ImportDescriptors(base);
    for (; library != nullptr && library->Name != 0; ++library) {
        visit(At<const char>(base, library->Name), FunctionsOf(base, *library));
    }
}

}  // namespace

void** FindImport(const std::string& name) {
    void** found = nullptr;
    ForEachLibrary([&](const char* /*library*/, const std::vector<ImportedFunction>& functions) {
        for (const ImportedFunction& function : functions) {
            if (found == nullptr && function.name == name) {
                found = function.entry;
            }
        }
    });
    return found;
}

std::vector<ImportedFunction> ImportsFrom(const std::string& library) {
    std::vector<ImportedFunction> found;
    ForEachLibrary([&](const char* name, const std::vector<ImportedFunction>& functions) {
        if (lstrcmpiA(name, library.c_str()) == 0) {
            found.insert(found.end(), functions.begin(), functions.end());
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

void FailForMissingImport(const std::string& name) {
    throw std::runtime_error("not imported: " + name);
}

}  // namespace morvane::test
