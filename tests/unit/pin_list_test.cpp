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

TEST_F(UnboundEngine, DoesNotAddATitleThatIsAlreadyAPattern) {
    Engine().pinList.entries = {{L"Notepad", 5, 6}};
    AddWindow(L"nOTEPAD");
    EXPECT_EQ(Printed(Engine().pinList), Printed({true, {{L"Notepad", 5, 6}}}));
    // A pattern that only occurs in the title does not equal it.
    AddWindow(L"a.txt - Notepad");
    EXPECT_EQ(Engine().pinList.entries.size(), 2U);
}

}  // namespace

}  // namespace morvane::test
