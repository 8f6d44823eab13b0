#pragma once

#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

#include "base/gui_owners.h"

namespace morvane::test {

// Makes objects until the system has no room for another. Destroying one makes room for one.
template <typename Owner, typename Make>
[[nodiscard]] std::vector<Owner> FillRoom(Make make) {
    constexpr std::size_t MoreThanFit = 100'000;
    std::vector<Owner> made;
    made.reserve(MoreThanFit);
    while (Owner one{make()}) {
        made.push_back(std::move(one));
        if (made.size() == MoreThanFit) {
            throw std::runtime_error("the room has no limit");
        }
    }
    return made;
}

// All programs of the session share the room for menus.
[[nodiscard]] inline std::vector<Menu> FillMenuRoom() {
    return FillRoom<Menu>([] { return CreatePopupMenu(); });
}

}  // namespace morvane::test
