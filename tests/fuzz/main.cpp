// Feeds generated and corrupted inputs to all code that reads bytes or text.

#include <algorithm>
#include <array>
#include <chrono>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "base/win.h"
#include "fuzz/checks.h"
#include "fuzz/documents.h"
#include "fuzz/failure.h"
#include "fuzz/kept_documents.h"
#include "fuzz/number.h"
#include "fuzz/plants.h"
#include "settings/settings_text.h"
#include "support/printed.h"
#include "support/test_files.h"

namespace morvane::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t TextCapacity = std::size_t{256} * 1024;
constexpr std::uint32_t HeapCheckInterval = 500;
constexpr std::uint32_t SeedsOfAKeptDocument = 16;
constexpr std::uint32_t SeedOfOtherTexts = 0x9E37'79B9;  // differs from the document's
constexpr auto ProgressInterval = std::chrono::seconds(15);

struct Options {
    std::uint64_t documents = 1'000'000;
    std::uint64_t seconds = 0;  // 0: no limit
    std::uint32_t seed = 0;
    std::wstring keptFolder;
    std::wstring saveFolder = L".";
    std::wstring reportPath;
    std::wstring plant;
};

// False for an unknown option, for text that is not a number, and for zero.
bool TakeNumber(Options& options, const std::wstring& name, const std::wstring& text) {
    if (name == L"--seed") {
        const std::optional<std::uint32_t> seed = SeedFromText(text);
        options.seed = seed.value_or(0);
        return seed.has_value();
    }
    const std::uint64_t number = NumberFromText(text).value_or(0);
    if (name == L"--documents") {
        options.documents = number;
    } else if (name == L"--seconds") {
        options.seconds = number;
        options.documents = UINT64_MAX;
    } else {
        return false;
    }
    return number > 0;
}

std::optional<Options> ReadOptions(int count, wchar_t** arguments) {
    Options options;
    options.seed = static_cast<std::uint32_t>(Clock::now().time_since_epoch().count());
    for (int at = 1; at + 1 < count; at += 2) {
        const std::wstring name = arguments[at];
        const std::wstring value = arguments[at + 1];
        if (name == L"--kept") {
            options.keptFolder = value;
        } else if (name == L"--save") {
            options.saveFolder = value;
        } else if (name == L"--report") {
            options.reportPath = value;
        } else if (name == L"--plant") {
            options.plant = value;
        } else if (!TakeNumber(options, name, value)) {
            return std::nullopt;
        }
    }
    return count % 2 == 1 ? std::optional(options) : std::nullopt;
}

bool HeapsAreSound() {
    std::array<HANDLE, 64> heaps{};
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    return std::all_of(heaps.begin(), heaps.begin() + std::min<DWORD>(count, heaps.size()),
                       [](HANDLE heap) { return HeapValidate(heap, 0, nullptr) != FALSE; });
}

std::string CheckNotedTitle(Workplace& workplace, const PinList& list, const std::wstring& title,
                            Guard guard) {
    NoteText("the title " + Printed(title) + " in the list\n" + Printed(list));
    return CheckTitle(workplace, list, title, guard);
}

// Runs all checks for one document. The other texts depend on the seed alone and not on the
// document's generator, so that a kept document is checked with the same ones.
std::string CheckAll(Workplace& workplace, const std::string& document, std::uint32_t seed) {
    Generator generator(seed ^ SeedOfOtherTexts);
    const Guard guard = generator.Below(4) == 0 ? Guard::BeforeBegin : Guard::BehindEnd;
    std::string wrong = CheckDocument(workplace, document, guard);
    const PinList titleList = AnyTitleList(generator);
    if (wrong.empty()) {
        NoteText("the list of titles\n" + Printed(titleList));
        wrong = CheckTitleList(workplace, titleList);
    }
    const PinList list = ParseSettingsText(document);
    for (int titles = 0; titles < 3 && wrong.empty(); ++titles) {
        wrong = CheckNotedTitle(workplace, list, AnyTitle(generator, list), guard);
    }
    if (wrong.empty()) {
        const PinList another = AnyTitleList(generator);
        wrong = CheckNotedTitle(workplace, another, AnyTitle(generator, another), guard);
    }
    if (wrong.empty()) {
        const std::wstring commandLine = AnyCommandLine(generator);
        NoteText("the command line " + Printed(commandLine));
        wrong = CheckCommandLine(workplace, commandLine, guard);
    }
    if (wrong.empty()) {
        const std::wstring code = AnyLanguageCode(generator);
        NoteText("the language code " + Printed(code));
        wrong = CheckLanguageCode(workplace, code);
    }
    return wrong;
}

bool Passes(Workplace& workplace, std::uint32_t seed, const std::string& document) {
    NoteInput(seed, document);
    std::string wrong = CheckAll(workplace, document, seed);
    if (wrong.empty() && seed % HeapCheckInterval == 0 && !HeapsAreSound()) {
        wrong = "a heap is damaged (by this document or one shortly before)";
    }
    if (!wrong.empty()) {
        ReportFailure(wrong);
    }
    return wrong.empty();
}

bool KeptDocumentPasses(Workplace& workplace, const KeptDocument& document) {
    for (std::uint32_t seed = 0; seed < SeedsOfAKeptDocument; ++seed) {
        if (!Passes(workplace, seed, document.bytes)) {
            return false;
        }
    }
    return !document.seed || Passes(workplace, *document.seed, document.bytes);
}

bool KeptDocumentsPass(Workplace& workplace, const std::vector<KeptDocument>& kept) {
    for (const KeptDocument& document : kept) {
        if (!KeptDocumentPasses(workplace, document)) {
            std::printf("the kept document %ls\n", document.name.c_str());
            return false;
        }
    }
    return true;
}

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void PrintProgress(std::uint64_t done, Clock::time_point start) {
    const double seconds = SecondsSince(start);
    std::printf("fuzz: %" PRIu64 " documents, %.0f per second\n", done,
                static_cast<double>(done) / seconds);
    static_cast<void>(std::fflush(stdout));
}

void PrintResult(const Workplace& workplace, std::uint64_t done, Clock::time_point start,
                 const Options& options) {
    std::printf("fuzz: %" PRIu64 " documents in %.0f s, no failure; %" PRIu64 " entries written\n",
                done, SecondsSince(start), workplace.entries);
    for (std::size_t kind = 0; kind < UnstableNames.size(); ++kind) {
        std::printf("  %12" PRIu64 "  %s\n", workplace.unstableEntries.at(kind),
                    UnstableNames.at(kind).data());
    }
    if (!options.reportPath.empty()) {
        const std::string row = "| Fuzzing | " + std::to_string(done) + " documents, first seed " +
                                std::to_string(options.seed) + " | " +
                                std::to_string(std::llround(SecondsSince(start))) +
                                " s, 0 failures |\n";
        if (!WriteFileBytes(options.reportPath, row)) {
            std::printf("cannot write the report\n");
        }
    }
}

int Run(const Options& options) {
    Workplace workplace{GuardedMemory(TextCapacity), GuardedMemory(TextCapacity), {}, 0};
    std::vector<KeptDocument> kept;
    if (!options.keptFolder.empty()) {
        kept = ReadKeptDocuments(options.keptFolder);
        if (kept.empty()) {
            std::printf("FAILED: no kept documents, or one is unreadable, in %ls\n",
                        options.keptFolder.c_str());
            return 1;
        }
    }
    std::printf("fuzz: %zu kept documents, then from --seed %" PRIu32 "\n", kept.size(),
                options.seed);
    static_cast<void>(std::fflush(stdout));
    WatchForCrashes(options.saveFolder);
    if (!options.plant.empty()) {
        NoteInput(options.seed, "a planted fault");
        if (!PlantFault(options.plant)) {
            std::printf("there is no fault of this name\n");
            return 2;
        }
    }
    if (!KeptDocumentsPass(workplace, kept)) {
        return 1;
    }
    const Clock::time_point start = Clock::now();
    Clock::time_point lastProgress = start;
    std::uint64_t done = 0;
    while (done < options.documents &&
           (options.seconds == 0 || SecondsSince(start) < static_cast<double>(options.seconds))) {
        const auto seed = static_cast<std::uint32_t>(options.seed + done);
        Generator generator(seed);
        // Recorded without a document: a crash while making one is the tests' own fault.
        NoteInput(seed, {});
        const std::string document = AnyDocument(generator);
        if (!Passes(workplace, seed, document)) {
            return 1;
        }
        ++done;
        if (Clock::now() - lastProgress > ProgressInterval) {
            PrintProgress(done, start);
            lastProgress = Clock::now();
        }
    }
    if (!HeapsAreSound()) {
        ReportFailure("a heap is damaged at the end");
        return 1;
    }
    PrintResult(workplace, done, start, options);
    return 0;
}

}  // namespace
}  // namespace morvane::test

// Called by the C runtime's start-up; no header declares it.
int wmain(int count, wchar_t** arguments);

int wmain(int count, wchar_t** arguments) {
    const auto options = morvane::test::ReadOptions(count, arguments);
    if (!options) {
        std::printf(
            "usage: morvane_fuzz [--documents N | --seconds N] [--seed N] [--kept FOLDER]\n"
            "                    [--save FOLDER] [--report FILE] [--plant FAULT]\n");
        return 2;
    }
    return morvane::test::Run(*options);
}
