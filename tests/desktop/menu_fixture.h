#pragma once

#include <string_view>
#include <vector>

#include "base/owners.h"
#include "desktop/control_stand_in.h"
#include "desktop/engine_fixture.h"

namespace morvane::test {

// The engine with foreign windows and a control window, in English.
class MenuTest : public EngineTest {
protected:
    void SetUp() override;
    void TearDown() override;

    [[nodiscard]] ControlStandIn& Control() { return control_; }

    // A window of the other process with the given size.
    [[nodiscard]] HWND Sized(std::wstring_view title, int width, int height);

    // Opens the menu as the program does, runs the steps while it is open, and closes it.
    void Open(std::vector<ControlStandIn::Step> steps);

    // Posts a key to the open menu, so that nothing else on the desktop gets it.
    void Press(WPARAM virtualKey);

private:
    ComApartment com_;
    ControlStandIn control_;
};

// True if exactly this many menu windows are open.
[[nodiscard]] bool MenusOpen(std::size_t count);

}  // namespace morvane::test
