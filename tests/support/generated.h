#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <string_view>

// Generated cases, the same on every machine: a case depends only on its seed, and a failing case
// prints the seed.
namespace morvane::test {

class Generator {
public:
    explicit Generator(std::uint32_t seed) : engine_(seed) {}

    // From 0 up to, but not including, limit. The standard distributions differ between libraries.
    [[nodiscard]] std::size_t Below(std::size_t limit) { return engine_() % limit; }

    [[nodiscard]] std::int32_t Between(std::int32_t lowest, std::int32_t highest) {
        const auto count = static_cast<std::size_t>(highest - lowest) + 1;
        return lowest + static_cast<std::int32_t>(Below(count));
    }

    template <typename Range>
    [[nodiscard]] const auto& OneOf(const Range& range) {
        return std::data(range)[Below(std::size(range))];
    }

private:
    std::mt19937 engine_;
};

}  // namespace morvane::test
