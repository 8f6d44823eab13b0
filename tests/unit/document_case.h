#pragma once

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <string_view>

#include "settings/settings_text.h"
#include "support/printed.h"

namespace morvane::test {

// A file's bytes and what they are read as.
struct DocumentCase {
    std::string bytes;
    PinList list;
};

inline void ExpectLists(std::initializer_list<DocumentCase> cases) {
    constexpr std::size_t EnoughToTell = 80;
    for (const DocumentCase& c : cases) {
        EXPECT_EQ(Printed(ParseSettingsText(c.bytes)), Printed(c.list))
            << Printed(std::string_view(c.bytes).substr(0, EnoughToTell));
    }
}

}  // namespace morvane::test
