// What the tables of docs/settings.md show as code is what the program does.

#include "unit/settings_page.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "pin/identity.h"
#include "settings/settings_text.h"
#include "settings/text.h"
#include "support/printed.h"

namespace morvane::test {

namespace {

using Row = std::vector<std::string>;

std::vector<std::string> AllMatches(const std::string& text, const char* pattern) {
    const std::regex expression(pattern);
    std::vector<std::string> found;
    for (std::sregex_iterator at(text.begin(), text.end(), expression), end; at != end; ++at) {
        found.push_back((*at)[1]);
    }
    return found;
}

// The rows below the head.
std::vector<Row> Table(std::string_view head) {
    std::istringstream page{std::string(SettingsPage)};
    std::vector<Row> rows;
    std::string line;
    while (std::getline(page, line) && line != head) {
    }
    std::getline(page, line);  // the ruler
    while (std::getline(page, line) && !line.empty()) {
        rows.push_back(AllMatches(line, R"(\| (.*?) (?=\|))"));
    }
    return rows;
}

// What a cell shows as code; between two codes, "tab" stands for a TAB.
std::vector<std::string> Codes(const std::string& cell) {
    return AllMatches(std::regex_replace(cell, std::regex("`, tab, `"), "\t"), "`(.*?)`");
}

// "1280 x 720", "any width, 600 high", "8192 wide" or "none", perhaps with an explanation.
PinEntry WithSizeIn(const std::string& cell, std::wstring pattern) {
    std::smatch found;
    const auto is = [&](const char* wording) {
        return std::regex_search(cell, found, std::regex(wording));
    };
    if (is("^([0-9]+) \u00D7 ([0-9]+)")) {
        return {std::move(pattern), std::stoi(found[1]), std::stoi(found[2])};
    }
    if (is("^any width, ([0-9]+) high")) {
        return {std::move(pattern), 0, std::stoi(found[1])};
    }
    if (is("^([0-9]+) wide")) {
        return {std::move(pattern), std::stoi(found[1]), 0};
    }
    EXPECT_TRUE(is("^none")) << cell;
    return {std::move(pattern), 0, 0};
}

TEST(SettingsPage, TellsWhatSwitchesPinning) {
    const std::vector<Row> rows = Table("| Line | Pinning |");
    EXPECT_EQ(rows.size(), 4U);
    for (const Row& row : rows) {
        const std::vector<std::string> lines = Codes(row.at(0));
        EXPECT_FALSE(lines.empty());
        for (const std::string& line : lines) {
            for (const bool before : {false, true}) {
                const bool changes = !row.at(1).starts_with("unchanged");
                PinList list{before, {}};
                EXPECT_EQ(ParsePinningLine(Utf8ToWide(line), list), changes) << line;
                EXPECT_EQ(list.pinning, changes ? row.at(1).starts_with("on") : before) << line;
            }
        }
    }
}

TEST(SettingsPage, TellsWhichTitlesContainAPattern) {
    const std::vector<Row> rows = Table("| Pattern | Title | Contained |");
    EXPECT_EQ(rows.size(), 4U);
    for (const Row& row : rows) {
        EXPECT_EQ(PatternMatches(Utf8ToWide(row.at(1)), Utf8ToWide(Codes(row.at(0)).at(0))),
                  row.at(2).starts_with("yes"))
            << row.at(0);
    }
}

TEST(SettingsPage, TellsPatternAndMinimumSizeOfALine) {
    const std::vector<Row> rows = Table("| Line | Pattern | Minimum size |");
    EXPECT_EQ(rows.size(), 10U);
    for (const Row& row : rows) {
        const std::string line = Codes(row.at(0)).at(0);
        const PinEntry expected = WithSizeIn(row.at(2), Utf8ToWide(Codes(row.at(1)).at(0)));
        EXPECT_EQ(Printed(ParseEntryLine(Utf8ToWide(line)).value_or(PinEntry{})), Printed(expected))
            << line;
    }
}

TEST(SettingsPage, TellsWhatIsWrittenForALine) {
    std::size_t shown = 0;
    for (const Row& row : Table("| What you wrote | What Morvane writes |")) {
        const std::vector<std::string> lines = Codes(row.at(0));
        const std::vector<std::string> written = Codes(row.at(1));
        if (lines.empty() || written.empty()) {
            continue;  // told in words
        }
        ++shown;
        const std::string text = "\n" + FormatSettingsText(ParseSettingsText(lines[0]));
        EXPECT_NE(text.find("\n" + written[0] + "\n"), std::string::npos) << lines[0];
    }
    EXPECT_EQ(shown, 6U);
}

}  // namespace

}  // namespace morvane::test
