#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/owners.h"
#include "desktop/control_stand_in.h"
#include "desktop/engine_fixture.h"
#include "i18n/language.h"

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

    // Opens the menu, presses the keys, looks once that many menus are open, and closes it.
    void OpenAndLook(
        const std::function<void()>& look = [] {}, const std::vector<WPARAM>& keys = {},
        std::size_t menus = 1);

    // Posts keys to the open menu, so that nothing else on the desktop gets them.
    void Press(const std::vector<WPARAM>& keys);

    // Whether the program knows a row with this item data.
    [[nodiscard]] bool MeasuresRow(ULONG_PTR itemData);

private:
    ComApartment com_;
    ControlStandIn control_;
};

// The keys that open the submenus of the top level.
[[nodiscard]] inline std::vector<WPARAM> ToAddRemove() {
    return {VK_DOWN, VK_DOWN, VK_RIGHT};
}
[[nodiscard]] inline std::vector<WPARAM> ToMinSize() {
    return {VK_DOWN, VK_DOWN, VK_DOWN, VK_RIGHT};
}

// The top level with pinning on and no Startup shortcut, in the words of DescribedMenu.
using Lines = std::vector<std::wstring>;
[[nodiscard]] Lines MainLevel(Language language);

// True if exactly this many menu windows are open.
[[nodiscard]] bool MenusOpen(std::size_t count);

}  // namespace morvane::test
