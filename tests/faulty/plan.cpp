#include "faulty/plan.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <string_view>

#include "support/import_table.h"
#include "support/tray_relay.h"

namespace morvane::faulty {
namespace {

constexpr unsigned Always = std::numeric_limits<unsigned>::max();
constexpr DWORD LongestValue = 1024;

// Set up before anything is replaced, so that the report itself cannot fail.
struct Report {
    HANDLE file = INVALID_HANDLE_VALUE;
    decltype(&WriteFile) write = nullptr;
};

Report report;

std::string_view ValueOf(const char* variable, std::array<char, LongestValue>& buffer) {
    const DWORD length = GetEnvironmentVariableA(variable, buffer.data(), LongestValue);
    if (length >= LongestValue) {
        ExitProcess(PlanFailed);
    }
    return {buffer.data(), length};
}

unsigned ToNumber(std::string_view text) {
    unsigned number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
        ExitProcess(PlanFailed);
    }
    return number;
}

// The text after "@": one call, a range, or a range without an end.
void ReadCalls(std::string_view text, Fault& fault) {
    const std::size_t dash = text.find('-');
    fault.firstFailing = ToNumber(text.substr(0, dash));
    if (dash == std::string_view::npos) {
        fault.lastFailing = fault.firstFailing;
    } else {
        const std::string_view last = text.substr(dash + 1);
        fault.lastFailing = last.empty() ? Always : ToNumber(last);
    }
}

void Exchange(Fault& fault) {
    void** const entry = test::FindImport(fault.name);
    if (entry == nullptr) {
        ExitProcess(PlanFailed);
    }
    fault.original = test::ExchangeImport(entry, fault.replacement);
}

void CarryOut(std::string_view item, std::span<Fault* const> faults) {
    const std::size_t end = item.find_first_of("@=");
    const auto found = std::find_if(faults.begin(), faults.end(), [&](const Fault* fault) {
        return fault->name == item.substr(0, end);
    });
    if (found == faults.end()) {
        ExitProcess(PlanFailed);
    }
    Fault& fault = **found;
    fault.firstFailing = 1;
    fault.lastFailing = Always;
    if (end != std::string_view::npos) {
        const std::string_view rest = item.substr(end + 1);
        if (item[end] == '@') {
            ReadCalls(rest, fault);
        } else {
            fault.amount = ToNumber(rest);
        }
    }
    Exchange(fault);
}

void OpenReport() {
    std::array<char, LongestValue> buffer{};
    if (ValueOf("MORVANE_FAULT_REPORT", buffer).empty()) {
        return;
    }
    report.file = CreateFileA(buffer.data(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    report.write = &WriteFile;
    if (report.file == INVALID_HANDLE_VALUE) {
        ExitProcess(PlanFailed);
    }
}

void Write(std::string_view text) {
    DWORD written = 0;
    report.write(report.file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void NoteCall(const Fault& fault, bool failed) {
    if (report.file != INVALID_HANDLE_VALUE) {
        Write(fault.name);
        Write(failed ? " failed\n" : " passed\n");
    }
}

}  // namespace

bool MustFail(Fault& fault) {
    ++fault.calls;
    const bool fails = fault.calls >= fault.firstFailing && fault.calls <= fault.lastFailing &&
                       fault.firstFailing > 0;
    NoteCall(fault, fails);
    return fails;
}

void Note(const wchar_t* text) {
    if (report.file != INVALID_HANDLE_VALUE) {
        std::array<char, LongestValue> buffer{};
        WideCharToMultiByte(CP_UTF8, 0, text, -1, buffer.data(), LongestValue - 1, nullptr,
                            nullptr);
        Write(buffer.data());
        Write("\n");
    }
}

bool CarryOutPlan(std::span<Fault* const> faults) {
    OpenReport();
    // First, so that a call that the plan makes fail is not recorded.
    if (test::IsTrayRecorded()) {
        void** const entry = test::FindImport("Shell_NotifyIconW");
        if (entry == nullptr) {
            ExitProcess(PlanFailed);
        }
        test::ExchangeImport(entry, reinterpret_cast<void*>(&test::RelayTrayCall));
    }
    std::array<char, LongestValue> buffer{};
    std::string_view plan = ValueOf("MORVANE_FAULTS", buffer);
    while (!plan.empty()) {
        const std::size_t comma = plan.find(',');
        CarryOut(plan.substr(0, comma), faults);
        plan = comma == std::string_view::npos ? std::string_view() : plan.substr(comma + 1);
    }
    return true;
}

}  // namespace morvane::faulty
