#include "kit/report.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "kit/level.h"
#include "kit/step.h"
#include "settings/text.h"

namespace morvane::kit {
namespace {

std::string Seconds(double seconds) {
    char text[40]{};
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
    line.resize(9, ' ');
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

std::string StepList(const Report& report, bool done) {
    std::string text;
    for (const Step& step : Steps()) {
        if (IsDone(step, report.all, report.results) == done) {
            text.append("- ").append(step.text).append("\n");
        }
    }
    return text.empty() ? "none\n" : text;
}

// XML knows no other control characters, and no bytes that are not UTF-8.
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char character : WideToUtf8(Utf8ToWide(text))) {
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default: {
                const bool isControl =
                    static_cast<unsigned char>(character) < ' ' && character != '\n';
                escaped += isControl ? '?' : character;
                break;
            }
        }
    }
    return escaped;
}

std::string Element(const Result& result) {
    const std::string start = "    <testcase classname=\"" + Escaped(result.test.suite) +
                              "\" name=\"" + Escaped(result.test.name) + "\" time=\"" +
                              Seconds(result.seconds) + "\">";
    std::string inside;
    switch (result.outcome) {
        case Outcome::Passed:
            break;
        case Outcome::Failed:
            inside = "<failure message=\"failed\">" + Escaped(result.text) + "</failure>";
            break;
        case Outcome::Skipped:
            inside = "<skipped message=\"" + Escaped(result.text) + "\"/>";
            break;
        case Outcome::Error:
        case Outcome::NotRun:
            inside = std::string("<error message=\"") + NameOf(result.outcome) + "\">" +
                     Escaped(result.text) + "</error>";
            break;
    }
    return start + inside + "</testcase>\n";
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
    for (const Fact& fact : report.facts) {
        std::string name = fact.name + ":";
        name.resize(18, ' ');
        text += name + fact.value + "\n";
    }
    text += "Result:           " + Summary(report) + ", in " + Seconds(report.seconds) + " s\n";
    text += "\nFailures\n\n" + Failures(report);
    text += "\nSkipped tests\n\n" + Skips(report);
    text += "\nSteps of the Windows checklist that are thereby done\n\n" + StepList(report, true);
    text += "\nSteps that are not\n\n" + StepList(report, false);
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
