#include "measure/sampling.h"

#include <cstdio>
#include <stdexcept>

namespace morvane::bench {

namespace {

constexpr double MicrosecondsPerSecond = 1e6;

std::string InJson(const std::vector<double>& numbers) {
    std::string text = "[";
    for (const double number : numbers) {
        text += (text.size() > 1 ? "," : "") + std::to_string(number);
    }
    return text + "]";
}

void Write(std::FILE* stream, const std::string& line) {
    std::fputs((line + "\n").c_str(), stream);
    std::fflush(stream);
}

}  // namespace

void Require(bool condition, const std::string& what) {
    if (!condition) {
        throw std::runtime_error("expected: " + what);
    }
}

void Announce(const std::string& what) {
    Write(stderr, "bench: " + what);
}

double Microseconds(std::int64_t ticks) {
    static const double perSecond = [] {
        LARGE_INTEGER frequency{};
        QueryPerformanceFrequency(&frequency);
        return static_cast<double>(frequency.QuadPart);
    }();
    return static_cast<double>(ticks) * MicrosecondsPerSecond / perSecond;
}

void Emit(std::string_view row, const Fields& fields) {
    std::string line = "{\"row\":\"" + std::string(row) + "\"";
    for (const auto& [name, numbers] : fields) {
        line += ",\"" + std::string(name) + "\":" + InJson(numbers);
    }
    Write(stdout, line + "}");
}

void Emit(std::string_view row, const Pairs& pairs) {
    Emit(row, {{"ours", pairs.ours}, {"bare", pairs.bare}});
}

}  // namespace morvane::bench
