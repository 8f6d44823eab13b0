#pragma once

// One statement about the desktop, as a word of the command line:
//   topmost:TITLE      the window is always on top
//   ordinary:TITLE     the window is there and is not
//   active:TITLE       the window is the foreground window
//   above:TITLE:TITLE  the first window lies above the second
// TITLE is a part of a window's title.

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
    std::wstring lowerTitle;  // of Above alone
};

// None when the text is no such statement.
[[nodiscard]] std::optional<Expectation> ParseExpectation(std::wstring_view text);

// False too when a window that the statement is about is not there.
[[nodiscard]] bool Holds(const Expectation& expectation, const std::vector<ShownWindow>& windows);

}  // namespace morvane::report
