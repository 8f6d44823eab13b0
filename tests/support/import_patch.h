#pragma once

#include <stdexcept>
#include <string>

#include "base/win.h"
#include "support/import_table.h"
#include "support/refusal.h"

namespace morvane::test {

// Replaces a platform function with one of ours for all calls from this executable (see
// ExchangeImport), so that the code under test needs no seams. The entry is restored when the patch
// ends; patches of the same function must end in reverse order. Throws std::runtime_error if the
// function is not imported: the patch would have no effect.
template <typename Function>
class ImportPatch;

template <typename Result, typename... Arguments>
class ImportPatch<Result(WINAPI*)(Arguments...)> {
public:
    using Function = Result(WINAPI*)(Arguments...);

    ImportPatch(const std::string& name, Function replacement) : entry_(FindImport(name)) {
        if (entry_ == nullptr) {
            throw std::runtime_error("not imported: " + name);
        }
        original_ = ExchangeImport(entry_, reinterpret_cast<void*>(replacement));
    }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;
    ImportPatch(ImportPatch&&) = delete;
    ImportPatch& operator=(ImportPatch&&) = delete;
    ~ImportPatch() { ExchangeImport(entry_, original_); }

    // For replacements that only watch, or fail only sometimes.
    [[nodiscard]] Function Original() const { return reinterpret_cast<Function>(original_); }

private:
    void** entry_;
    void* original_ = nullptr;
};

// Makes every call of the function fail while the result lives.
template <typename Function, auto Failure, DWORD Error = ERROR_GEN_FAILURE>
[[nodiscard]] ImportPatch<Function> Refuse(const std::string& name) {
    return ImportPatch<Function>(name, Refusal<Function, Failure, Error>::Call);
}

}  // namespace morvane::test
