#include "pin/min_size.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <utility>

#include "support/printed.h"

namespace morvane::test {

namespace {

constexpr std::int32_t Lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t Highest = std::numeric_limits<std::int32_t>::max();

TEST(ClampMinSize, KeepsOneToTheLargestSize) {
    constexpr std::pair<std::int32_t, std::int32_t> Cases[] = {
        {Lowest, 0},  {-1, 0},      {0, 0},       {1, 1},       {2, 2},          {600, 600},
        {8191, 8191}, {8192, 8192}, {8193, 8192}, {9000, 8192}, {Highest, 8192},
    };
    for (const auto& [value, clamped] : Cases) {
        EXPECT_EQ(ClampMinSize(value), clamped) << value;
    }
}

TEST(ComputeEnforcedSize, GrowsEachDimensionByItselfAndShrinksNone) {
    struct Case {
        std::int32_t minWidth = 0;
        std::int32_t minHeight = 0;
        std::int32_t width = 0;
        std::int32_t height = 0;
        EnforcedSize size;
    };
    constexpr Case Cases[] = {
        {0, 0, 800, 500, {800, 500, false}},
        {0, 600, 800, 500, {800, 600, true}},
        {0, 600, 800, 700, {800, 700, false}},
        {0, 600, 800, 600, {800, 600, false}},
        {0, 600, 800, 599, {800, 600, true}},
        {600, 0, 500, 800, {600, 800, true}},
        {600, 0, 600, 800, {600, 800, false}},
        {600, 0, 599, 800, {600, 800, true}},
        {1280, 720, 1280, 720, {1280, 720, false}},
        {1280, 720, 1279, 720, {1280, 720, true}},
        {1280, 720, 1280, 719, {1280, 720, true}},
        {1280, 720, 1920, 719, {1920, 720, true}},
        {1280, 720, 640, 1080, {1280, 1080, true}},
        {1280, 720, 1, 1, {1280, 720, true}},
        {1280, 720, 0, 0, {1280, 720, true}},
        {1280, 720, 1920, 1080, {1920, 1080, false}},
        {1, 1, 0, 0, {1, 1, true}},
        {1, 0, 0, 0, {1, 0, true}},
        {0, 1, 0, 0, {0, 1, true}},
        {0, 0, 0, 0, {0, 0, false}},
        {0, 0, -5, -5, {-5, -5, false}},
        {-1, -1, -5, -5, {-5, -5, false}},
        {-1, 600, -5, 500, {-5, 600, true}},
        {8192, 8192, Highest, Highest, {Highest, Highest, false}},
        {8192, 8192, Lowest, Lowest, {8192, 8192, true}},
    };
    for (const Case& c : Cases) {
        const PinEntry entry{{}, c.minWidth, c.minHeight};
        SCOPED_TRACE(testing::Message()
                     << Printed(entry) << " on " << c.width << " x " << c.height);
        const EnforcedSize size = ComputeEnforcedSize(c.width, c.height, entry);
        EXPECT_EQ(size.width, c.size.width);
        EXPECT_EQ(size.height, c.size.height);
        EXPECT_EQ(size.changed, c.size.changed);
    }
}

}  // namespace

}  // namespace morvane::test
