#pragma once

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "base/win.h"
#include "support/actor.h"
#include "support/settings_header.h"

namespace morvane::test {

using Requests = std::vector<std::string>;

// The two pinning requests in the words of Described.
inline constexpr const char* TopmostRequest = "topmost 0,0 0x0 0053";
inline constexpr const char* OrdinaryRequest = "notopmost 0,0 0x0 0053";

// Requests in words, for readable failures: place in the Z-order, position, size, and the flags in
// hexadecimal.
[[nodiscard]] Requests Described(const std::vector<PositionRequest>& requests);
[[nodiscard]] std::string GrowRequest(int x, int y, int width, int height);

// The engine and windows of another process. The engine is bound to the settings file of a profile
// in which the program never ran, with the default list, nothing remembered and no control window.
class EngineTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    [[nodiscard]] Actor& Other() { return actor_; }

    // A visible window of the other process; x keeps it away from others where that matters.
    [[nodiscard]] HWND Window(std::wstring_view title, int x = 100);

    // The requests to the window since it was created or its records were cleared.
    [[nodiscard]] Requests Asked(HWND window) { return Described(actor_.Requests(window)); }

    // The order that one pass asks for.
    [[nodiscard]] std::vector<HWND> OrderOfAPass(const std::vector<HWND>& windows);

    // After a pass, which may be repeated.
    [[nodiscard]] static bool DesktopShows(const std::vector<HWND>& windows);

private:
    Actor actor_;
};

// Writes the lines to the settings file, then runs a pass.
void ApplySettings(std::string_view lines);

// Writes the lines to the settings file and loads them; no window is touched.
void LoadSettings(std::string_view lines);

// Lines that fill the list: "entry-0" to "entry-99".
[[nodiscard]] std::string FullSettings();

// The complete settings file as the program writes it, with pinning on.
[[nodiscard]] std::string WrittenSettings(std::string_view entryLines);

}  // namespace morvane::test
