#pragma once

#include <cstddef>

namespace morvane::test {

// How often this process has asked for memory since it began, by new and by whatever uses it. Only
// in executables that allocation_count.cpp is a source of: it replaces the operators.
[[nodiscard]] std::size_t AllocationCount();

}  // namespace morvane::test
