#pragma once

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "base/win.h"
#include "support/actor.h"
#include "support/settings_header.h"

namespace morvane::test {

// The two kinds of request, as Described words them.
inline constexpr const char* TopmostRequest = "topmost 0,0 0x0 0053";
inline constexpr const char* OrdinaryRequest = "notopmost 0,0 0x0 0053";

// Requests in words, so that a failing comparison can be read: where in the Z-order, position,
// size, and the flags in hexadecimal.
[[nodiscard]] std::vector<std::string> Described(const std::vector<PositionRequest>& requests);
[[nodiscard]] std::string GrowRequest(int x, int y, int width, int height);

// The windows of the list in the order of the desktop, highest first.
[[nodiscard]] std::vector<HWND> InDesktopOrder(const std::vector<HWND>& windows);

// Runs passes until the windows lie in this order, highest first. One pass is as a rule enough; on
// a busy machine a window was now and then seen above one that was asked after it, without any
// further request to either, and the next pass put it right.
[[nodiscard]] bool PassesOrder(const std::vector<HWND>& windows);

// The engine before foreign windows: bound to the settings file of a disposable profile in which
// the program never ran, with the default list, nothing remembered and no control window.
class EngineTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    [[nodiscard]] Actor& Other() { return actor_; }

    // A visible window of the other process; x keeps it apart from others where that matters.
    [[nodiscard]] HWND Window(std::wstring_view title, int x = 100);

    // What the window was asked since it was created or its records forgotten.
    [[nodiscard]] std::vector<std::string> Asked(HWND window) {
        return Described(actor_.Requests(window));
    }

private:
    Actor actor_;
};

// Puts the given lines in the settings file, then runs a pass.
void ApplySettings(std::string_view lines);

// Puts the given lines in the settings file and the engine's list; no window is touched.
void LoadSettings(std::string_view lines);

// As many lines as the list takes: "entry-0" to "entry-99".
[[nodiscard]] std::string FullSettings();

// The whole content of a written settings file with pinning on.
[[nodiscard]] std::string WrittenSettings(std::string_view entryLines);

}  // namespace morvane::test
