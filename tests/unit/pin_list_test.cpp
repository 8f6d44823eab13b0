#include "pin/pin_list.h"

#include <gtest/gtest.h>
#include <string>

#include "pin/engine.h"
#include "pin/pin_operations.h"
#include "support/printed.h"

// The list and its operations that touch neither a file nor a window.
namespace morvane::test {

namespace {

// The engine without a settings file; reset afterwards.
class UnboundEngine : public testing::Test {
protected:
    UnboundEngine() { Engine() = PinEngine{}; }
    ~UnboundEngine() override { Engine() = PinEngine{}; }

    static void FillList() {
        for (int number = 1; number <= 100; ++number) {
            Engine().pinList.entries.push_back({L"entry" + std::to_wstring(number), 0, 0});
        }
    }
};

TEST(PinList, StartsWithPinningOnAndNoEntries) {
    EXPECT_EQ(Printed(PinList{}), "pinning on\n");
    EXPECT_EQ(Printed(PinEntry{L"a"}), Printed({L"a", 0, 0}));
}

TEST(PinEngine, StartsUnbound) {
    const PinEngine engine;
    EXPECT_TRUE(engine.ownClassName.empty());
    EXPECT_EQ(engine.ownWindow, nullptr);
    EXPECT_TRUE(engine.settingsPath.empty());
    EXPECT_EQ(Printed(engine.pinList), "pinning on\n");
    EXPECT_TRUE(engine.pinnedWindows.empty());
}

TEST_F(UnboundEngine, AddsATitleAsAPatternWithoutSize) {
    AddWindow(L"a.txt - Notepad");
    AddWindow(L"b");
    EXPECT_EQ(Printed(Engine().pinList), Printed({true, {{L"a.txt - Notepad"}, {L"b"}}}));
}

TEST_F(UnboundEngine, DoesNotAddAnEmptyTitle) {
    AddWindow(L"");
    EXPECT_EQ(Printed(Engine().pinList), Printed(PinList{}));
}

TEST_F(UnboundEngine, DoesNotAddATitleThatIsAlreadyAPattern) {
    Engine().pinList.entries = {{L"Notepad", 5, 6}};
    AddWindow(L"nOTEPAD");
    EXPECT_EQ(Printed(Engine().pinList), Printed({true, {{L"Notepad", 5, 6}}}));
    // A pattern that only occurs in the title does not equal it.
    AddWindow(L"a.txt - Notepad");
    EXPECT_EQ(Engine().pinList.entries.size(), 2U);
}

TEST_F(UnboundEngine, CutsALongTitle) {
    for (const std::size_t length : {511U, 512U, 513U, 600U}) {
        Engine().pinList.entries.clear();
        AddWindow(std::wstring(length, L'x'));
        ASSERT_EQ(Engine().pinList.entries.size(), 1U);
        EXPECT_EQ(Engine().pinList.entries[0].pattern.size(), length < 512 ? length : 512U);
    }
}

TEST_F(UnboundEngine, AddsNothingToAFullList) {
    FillList();
    const std::string full = Printed(Engine().pinList);
    AddWindow(L"another");
    EXPECT_EQ(Printed(Engine().pinList), full);
    AddWindowWithMinSize(nullptr, 5, 6, L"another");
    EXPECT_EQ(Printed(Engine().pinList), full);

    Engine().pinList.entries.pop_back();
    AddWindow(L"another");
    EXPECT_EQ(Engine().pinList.entries.size(), 100U);
    EXPECT_EQ(Engine().pinList.entries.back().pattern, L"another");
}

TEST_F(UnboundEngine, RemovesNothingBeyondTheLastEntry) {
    FillList();
    const std::string full = Printed(Engine().pinList);
    for (const std::size_t index : {std::size_t{100}, std::size_t{101}, ~std::size_t{0}}) {
        RemoveEntry(index);
        EXPECT_EQ(Printed(Engine().pinList), full);
    }
}

}  // namespace

}  // namespace morvane::test
