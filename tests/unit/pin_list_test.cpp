#include "pin/pin_list.h"

#include <gtest/gtest.h>

#include "pin/engine.h"
#include "support/printed.h"

namespace morvane::test {

namespace {

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

}  // namespace

}  // namespace morvane::test
