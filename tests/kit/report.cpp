#include "kit/report.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "kit/level.h"
#include "kit/step.h"
#include "settings/text.h"

namespace morvane::kit {
namespace {

// Where the column behind it begins.
constexpr std::size_t FactColumn = 18;
constexpr std::size_t OutcomeColumn = 9;

constexpr std::size_t LongestNumber = 40;

std::string Seconds(double seconds) {
    char text[LongestNumber]{};
    std::snprintf(text, sizeof(text), "%.3f", seconds);
    return text;
}

std::string Indented(std::string_view text) {
    std::string lines = "    ";
    while (text.ends_with('\n')) {
        text.remove_suffix(1);
    }
    for (const char character : text) {
        lines += character;
        if (character == '\n') {
            lines += "    ";
        }
    }
    return lines;
}

std::string LineOf(const Result& result) {
    std::string line = NameOf(result.outcome);
    line.resize(OutcomeColumn, ' ');
    return line + result.level + "  " + FullName(result.test) + "  " + Seconds(result.seconds) +
           " s\n";
}

std::string Failures(const Report& report) {
    std::string text;
    for (const std::string& trouble : report.troubles) {
        text += "TROUBLE  " + trouble + "\n";
    }
    for (const Result& result : report.results) {
        if (IsFailure(result.outcome)) {
            text += LineOf(result) + Indented(result.text) + "\n";
        }
    }
    return text.empty() ? "none\n" : text;
}

std::string Skips(const Report& report) {
    std::string text;
    for (const Result& result : report.results) {
        if (result.outcome == Outcome::Skipped) {
            text += FullName(result.test) + ": " + result.text + "\n";
        }
    }
    return text.empty() ? "none\n" : text;
}

std::string StepList(const Report& report, bool covered) {
    std::string text;
    for (const Step& step : Steps()) {
        if (IsCovered(step, report.results) == covered) {
            text.append("- ").append(step.text).append("\n");
        }
    }
    return text.empty() ? "none\n" : text;
}

struct Escape {
    char character;
    const char* text;
};

constexpr Escape Escapes[] = {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}};

// XML allows few control characters; only the end of a line says anything here.
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char character : WideToUtf8(Utf8ToWide(text))) {
        const auto* const escape =
            std::find_if(std::begin(Escapes), std::end(Escapes),
                         [=](const Escape& item) { return item.character == character; });
        const bool isControl = static_cast<unsigned char>(character) < ' ' && character != '\n';
        escaped += escape != std::end(Escapes) ? escape->text
                                               : std::string(1, isControl ? '?' : character);
    }
    return escaped;
}

std::string Element(const Result& result) {
    std::string element = "    <testcase classname=\"" + Escaped(result.test.suite) + "\" name=\"" +
                          Escaped(result.test.name) + "\" time=\"" + Seconds(result.seconds) +
                          "\">";
    const std::string text = Escaped(result.text);
    if (result.outcome == Outcome::Skipped) {
        element += "<skipped message=\"" + text + "\"/>";
    } else if (result.outcome != Outcome::Passed) {
        const std::string name = result.outcome == Outcome::Failed ? "failure" : "error";
        element +=
            "<" + name + " message=\"" + NameOf(result.outcome) + "\">" + text + "</" + name + ">";
    }
    return element + "</testcase>\n";
}

}  // namespace

std::size_t CountOf(const Report& report, Outcome outcome) {
    return static_cast<std::size_t>(
        std::count_if(report.results.begin(), report.results.end(),
                      [outcome](const Result& result) { return result.outcome == outcome; }));
}

std::string Summary(const Report& report) {
    const std::size_t failed =
        CountOf(report, Outcome::Failed) + CountOf(report, Outcome::Error) + report.troubles.size();
    return std::to_string(CountOf(report, Outcome::Passed)) + " passed, " + std::to_string(failed) +
           " failed, " + std::to_string(CountOf(report, Outcome::Skipped)) + " skipped, " +
           std::to_string(CountOf(report, Outcome::NotRun)) + " not run";
}

bool IsGood(const Report& report) {
    return report.troubles.empty() && CountOf(report, Outcome::Passed) > 0 &&
           CountOf(report, Outcome::Passed) + CountOf(report, Outcome::Skipped) ==
               report.results.size();
}

std::string PlainText(const Report& report) {
    std::string text = "Morvane, verified on this machine\n\n";
    std::vector<Fact> facts = report.facts;
    facts.push_back({"Result", Summary(report) + ", in " + Seconds(report.seconds) + " s"});
    for (const Fact& fact : facts) {
        std::string name = fact.name + ":";
        name.resize(FactColumn, ' ');
        text += name + fact.value + "\n";
    }
    text += "\nFailures\n\n" + Failures(report);
    text += "\nSkipped tests\n\n" + Skips(report);
    if (report.isWhole) {
        text += "\nSteps these tests cover\n\n" + StepList(report, true);
        text += "\nSteps they do not cover\n\n" + StepList(report, false);
    }
    text += "\nAll tests\n\n";
    for (const Result& result : report.results) {
        text += LineOf(result);
    }
    std::string lines;
    for (const char character : WideToUtf8(Utf8ToWide(text))) {
        lines.append(character == '\n' ? 1 : 0, '\r').append(1, character);
    }
    return lines;
}

std::string JUnitXml(const Report& report) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n";
    for (const Level& level : Levels()) {
        text.append("  <testsuite name=\"").append(level.name).append("\">\n");
        for (const Result& result : report.results) {
            text += result.level == level.name ? Element(result) : "";
        }
        text += "  </testsuite>\n";
    }
    text += "  <testsuite name=\"run\">\n";
    for (const std::string& trouble : report.troubles) {
        text += Element({"run", {"run", "trouble"}, Outcome::Error, 0, trouble});
    }
    return text + "  </testsuite>\n</testsuites>\n";
}

}  // namespace morvane::kit
