#include "support/import_patch.h"

#include <gtest/gtest.h>
#include <stdexcept>

#include "base/win.h"
#include "pin/window_query.h"

namespace morvane::test {
namespace {

using GetWindowFunction = HWND(WINAPI*)(HWND, UINT);

HWND WINAPI AnOwner(HWND window, UINT /*relation*/) {
    return window;
}

HWND WINAPI NoOwner(HWND /*window*/, UINT /*relation*/) {
    return nullptr;
}

TEST(ImportPatchTest, ReplacesAPlatformFunctionForTheCodeUnderTestAndRestoresIt) {
    const HWND desktop = GetDesktopWindow();
    ASSERT_FALSE(HasOwner(desktop));
    {
        const ImportPatch<GetWindowFunction> patch("GetWindow", AnOwner);
        EXPECT_TRUE(HasOwner(desktop));
        {
            const ImportPatch<GetWindowFunction> inner("GetWindow", NoOwner);
            EXPECT_FALSE(HasOwner(desktop));
            EXPECT_EQ(inner.Original()(desktop, GW_OWNER), desktop);
        }
        EXPECT_TRUE(HasOwner(desktop));
    }
    EXPECT_FALSE(HasOwner(desktop));
}

TEST(ImportPatchTest, RejectsAFunctionThatIsNotImported) {
    EXPECT_THROW(ImportPatch<GetWindowFunction>("NoSuchFunction", AnOwner), std::runtime_error);
}

}  // namespace
}  // namespace morvane::test
