#pragma once

// One statement about the desktop, as a word of the command line:
//   topmost:TITLE      the window is always on top
//   ordinary:TITLE     the window exists and is not
//   active:TITLE       the window is the foreground window
//   above:TITLE:TITLE  the first window lies above the second
// TITLE is part of a window's title.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "session/report/window_list.h"

namespace morvane::report {

enum class Claim { Topmost, Ordinary, Active, Above };

struct Expectation {
    Claim claim = Claim::Ordinary;
    std::wstring title;
    std::wstring lowerTitle;  // for Above only
};

// Empty if the text is not such a statement.
[[nodiscard]] std::optional<Expectation> ParseExpectation(std::wstring_view text);

// False if a window in the statement does not exist.
[[nodiscard]] bool Holds(const Expectation& expectation, const std::vector<ShownWindow>& windows);

}  // namespace morvane::report
