#pragma once

#include <string_view>
#include <vector>

namespace morvane::test {

// The entry of this executable's import table that holds the address of a platform function; null
// when the executable does not import the name.
[[nodiscard]] void** FindImport(std::string_view name);

struct ImportedFunction {
    std::string_view name;
    void** entry;
};

// All functions that this executable imports from a library by name; the library's name in any case
// ("user32.dll").
[[nodiscard]] std::vector<ImportedFunction> ImportsFrom(std::string_view library);

// Puts another function there and returns the one before. The code of this executable calls the new
// one from now on; calls from inside the platform's libraries go on as before, and so may further
// calls in the very function that makes the exchange, where the compiler has read the entry
// already.
void* ExchangeImport(void** entry, void* function);

}  // namespace morvane::test
