#pragma once

#include <string>
#include <vector>

#include "base/win.h"

namespace morvane::test {

// Puts a function of ours into the place of a platform function, for the calls that the code of
// this executable makes: one entry of its import table is exchanged, so that the code under test is
// the very code that is shipped. Calls from inside the platform's libraries go on as before, and so
// may further calls in the very function that makes the patch, where the compiler has read the
// entry already. The entry is restored when the patch ends; patches of the same function end in
// reverse order.
template <typename Function>
class ImportPatch;

// The exchange itself, untyped; null when the executable does not import the name.
[[nodiscard]] void** FindImport(const std::string& name);
void* ExchangeImport(void** entry, void* function);

// All functions that the executable imports from a library, by name; the library's name in any case
// ("user32.dll").
struct ImportedFunction {
    std::string name;
    void** entry;
};
[[nodiscard]] std::vector<ImportedFunction> ImportsFrom(const std::string& library);

// Throws std::runtime_error: a fault that is not in the import table would never happen.
[[noreturn]] void FailForMissingImport(const std::string& name);

template <typename Result, typename... Arguments>
class ImportPatch<Result(WINAPI*)(Arguments...)> {
public:
    using Function = Result(WINAPI*)(Arguments...);

    ImportPatch(const std::string& name, Function replacement) : entry_(FindImport(name)) {
        if (entry_ == nullptr) {
            FailForMissingImport(name);
        }
        original_ = ExchangeImport(entry_, reinterpret_cast<void*>(replacement));
    }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;
    ImportPatch(ImportPatch&&) = delete;
    ImportPatch& operator=(ImportPatch&&) = delete;
    ~ImportPatch() { ExchangeImport(entry_, original_); }

    // The platform's own, for replacements that only watch or fail now and then.
    [[nodiscard]] Function Original() const { return reinterpret_cast<Function>(original_); }

private:
    void** entry_;
    void* original_ = nullptr;
};

}  // namespace morvane::test
