#pragma once

#include <string>
#include <vector>

#include "kit/result.h"

namespace morvane::kit {

// What tests show on Windows, so that nobody need look; docs/windows-checklist.md has the rest.
struct Step {
    const char* text;
    std::vector<const char*> tests;  // names; "*" stands for any text
};

[[nodiscard]] const std::vector<Step>& Steps();

// True if each name stands for tests that were run, and all of them passed.
[[nodiscard]] bool IsCovered(const Step& step, const std::vector<Result>& results);

}  // namespace morvane::kit
