#pragma once

#include <string_view>
#include <vector>

namespace morvane::test {

// The entry of this executable's import table that holds the function's address; null if the
// executable does not import it.
[[nodiscard]] void** FindImport(std::string_view name);

struct ImportedFunction {
    std::string_view name;
    void** entry;
};

// All functions that this executable imports by name from a library such as "user32.dll". The case
// of the library's name does not matter.
[[nodiscard]] std::vector<ImportedFunction> ImportsFrom(const char* library);

// Replaces the function in an entry and returns the old one. From now on this executable's code
// calls the new one. Calls from inside system libraries are not affected; nor, perhaps, are later
// calls in the function that makes the exchange, if the compiler has already loaded the entry.
void* ExchangeImport(void** entry, void* function);

}  // namespace morvane::test
