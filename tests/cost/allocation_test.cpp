// How often a pass allocates memory once it has seen all windows: never for a window that does not
// match, at most once for one that does.

#include <cstddef>
#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "cost/allocation_count.h"
#include "desktop/engine_fixture.h"
#include "pin/enforcement.h"
#include "pin/engine.h"
#include "pin/identity.h"
#include "support/test_environment.h"

namespace morvane::test {
namespace {

class AllocationTest : public EngineTest {
protected:
    void AddWindows(int count, const wchar_t* title) {
        WindowSpec spec;
        spec.title = title;
        ASSERT_EQ(Other().CreateMany(count, spec).size(), static_cast<std::size_t>(count));
    }
};

// For a pass over windows that the previous pass has already seen.
std::size_t AllocationsOfPass() {
    ApplyAll();
    return AllocationsOf(ApplyAll);
}

TEST_F(AllocationTest, AreCounted) {
    // These outlive the calls, or the compiler would optimise the allocations away.
    std::unique_ptr<int> one;
    std::unique_ptr<int[]> some;
    std::wstring text;
    EXPECT_EQ(AllocationsOf([&] { one = std::make_unique<int>(1); }), 1U);
    EXPECT_EQ(AllocationsOf([&] { some = std::make_unique<int[]>(3); }), 1U);
    EXPECT_EQ(AllocationsOf([&] { text.resize(100); }), 1U);
    EXPECT_EQ(AllocationsOf([] {}), 0U);
    EXPECT_EQ(text.size(), static_cast<std::size_t>(*one + 99 + some[2]));
}

TEST_F(AllocationTest, AWindowThatMatchesNothingCostsNone) {
    WriteSettings(FullSettings());
    const std::size_t without = AllocationsOfPass();
    AddWindows(40,
               L"Editor of texts, with a title that is longer than what a string holds itself ");
    EXPECT_EQ(AllocationsOfPass(), without);
    EXPECT_TRUE(Engine().pinnedWindows.empty());
}

TEST_F(AllocationTest, AMatchingWindowCostsOneAtMost) {
    constexpr int Windows = 40;
    WriteSettings("editor\n" + FullSettings());
    const std::size_t without = AllocationsOfPass();
    AddWindows(Windows, L"Editor ");
    const std::size_t with = AllocationsOfPass();
    ASSERT_EQ(Engine().pinnedWindows.size(), static_cast<std::size_t>(Windows));
    EXPECT_LE(with - without, static_cast<std::size_t>(Windows));
    EXPECT_EQ(AllocationsOfPass(), with);
}

// Three for the file: its bytes, the line being converted and the list.
TEST_F(AllocationTest, AnEntryInTheFileCostsOneAndTheFileThreeMore) {
    const std::string line = "a pattern too long to need no memory of its own ";
    for (const std::size_t entries : {1U, 10U, 100U}) {
        std::string lines;
        for (std::size_t index = 0; index < entries; ++index) {
            lines += line + std::to_string(index) + " x\n";
        }
        LoadSettings(lines);
        ASSERT_EQ(Engine().pinList.entries.size(), entries);
        EXPECT_EQ(AllocationsOfPass(), entries + 3);
    }
}

TEST_F(AllocationTest, FindingTheEntryOfATitleCostsNone) {
    LoadSettings(FullSettings() + "editor\n");
    const std::wstring title = std::wstring(480, L'x') + L" - ENTRY-42 - text editor";
    ASSERT_EQ(title.size(), 505U);
    std::int32_t found = NoEntry;
    EXPECT_EQ(AllocationsOf([&] { found = FindBestEntryIndex(Engine().pinList, title); }), 0U);
    EXPECT_EQ(found, 42);
}

}  // namespace
}  // namespace morvane::test
