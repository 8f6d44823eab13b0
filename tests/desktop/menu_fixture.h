#pragma once

#include <string_view>
#include <vector>

#include "base/owners.h"
#include "desktop/control_stand_in.h"
#include "desktop/engine_fixture.h"

namespace morvane::test {

// The engine before foreign windows, with a control window, in English.
class MenuTest : public EngineTest {
protected:
    void SetUp() override;
    void TearDown() override;

    [[nodiscard]] ControlStandIn& Control() { return control_; }

    // A window of the other process with a size of its own.
    [[nodiscard]] HWND Sized(std::wstring_view title, int width, int height);

    // Opens the menu with the program's own call, goes through the steps while it is open, and
    // closes it.
    void Open(std::vector<ControlStandIn::Step> steps);

    // A key for the open menu: posted, so that nothing else on the desktop gets it.
    void Press(WPARAM virtualKey);

private:
    ComApartment com_;
    ControlStandIn control_;
};

// True when so many menu windows are open.
[[nodiscard]] bool MenusOpen(std::size_t count);

}  // namespace morvane::test
