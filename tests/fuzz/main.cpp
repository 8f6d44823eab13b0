// Feeds generated and spoiled inputs to everything of the program that reads bytes or text.

#include <algorithm>
#include <array>
#include <chrono>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "base/owners.h"
#include "base/win.h"
#include "fuzz/checks.h"
#include "fuzz/documents.h"
#include "fuzz/failure.h"
#include "settings/settings_text.h"
#include "support/test_files.h"

namespace morvane::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t TextCapacity = std::size_t{256} * 1024;
constexpr std::uint32_t HeapCheckInterval = 500;
constexpr std::uint32_t SeedsOfAKeptDocument = 16;
constexpr auto ProgressInterval = std::chrono::seconds(15);

struct Options {
    std::uint64_t documents = 1'000'000;
    std::uint64_t seconds = 0;  // 0: no limit
    std::uint32_t seed = 0;
    std::wstring keptFolder;
    std::wstring saveFolder = L".";
    std::wstring reportPath;
};

std::optional<Options> ReadOptions(int count, wchar_t** arguments) {
    Options options;
    options.seed = static_cast<std::uint32_t>(Clock::now().time_since_epoch().count());
    for (int at = 1; at + 1 < count; at += 2) {
        const std::wstring name = arguments[at];
        const wchar_t* const value = arguments[at + 1];
        if (name == L"--documents") {
            options.documents = std::wcstoull(value, nullptr, 10);
        } else if (name == L"--seconds") {
            options.seconds = std::wcstoull(value, nullptr, 10);
            options.documents = UINT64_MAX;
        } else if (name == L"--seed") {
            options.seed = static_cast<std::uint32_t>(std::wcstoul(value, nullptr, 10));
        } else if (name == L"--kept") {
            options.keptFolder = value;
        } else if (name == L"--save") {
            options.saveFolder = value;
        } else if (name == L"--report") {
            options.reportPath = value;
        } else {
            return std::nullopt;
        }
    }
    return count % 2 == 1 ? std::optional(options) : std::nullopt;
}

struct KeptDocument {
    std::wstring name;
    std::string bytes;
};

std::vector<KeptDocument> ReadKeptDocuments(const std::wstring& folder) {
    std::vector<KeptDocument> kept;
    WIN32_FIND_DATAW found{};
    const FindHandle search(FindFirstFileW((folder + L"\\*.txt").c_str(), &found));
    for (BOOL more = search ? TRUE : FALSE; more != FALSE;
         more = FindNextFileW(search.get(), &found)) {
        const std::optional<std::string> bytes =
            ReadFileBytes(folder + L"\\" + static_cast<const wchar_t*>(found.cFileName));
        if (bytes) {
            kept.push_back({static_cast<const wchar_t*>(found.cFileName), *bytes});
        }
    }
    std::sort(kept.begin(), kept.end(),
              [](const KeptDocument& a, const KeptDocument& b) { return a.name < b.name; });
    return kept;
}

bool HeapsAreSound() {
    std::array<HANDLE, 64> heaps{};
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    return std::all_of(heaps.begin(), heaps.begin() + std::min<DWORD>(count, heaps.size()),
                       [](HANDLE heap) { return HeapValidate(heap, 0, nullptr) != FALSE; });
}

// Everything that one document is put through; the other texts come of the generator.
std::string CheckAll(Workplace& workplace, const std::string& document, Generator& generator) {
    const Guard guard = generator.Below(4) == 0 ? Guard::BeforeBegin : Guard::BehindEnd;
    std::string wrong = CheckDocument(workplace, document, guard);
    if (wrong.empty()) {
        wrong = CheckTitleList(workplace, AnyTitleList(generator));
    }
    const PinList list = ParseSettingsText(document);
    for (int titles = 0; titles < 3 && wrong.empty(); ++titles) {
        wrong = CheckTitle(workplace, list, AnyTitle(generator, list), guard);
    }
    if (wrong.empty()) {
        const PinList titleList = AnyTitleList(generator);
        wrong = CheckTitle(workplace, titleList, AnyTitle(generator, titleList), guard);
    }
    if (wrong.empty()) {
        wrong = CheckCommandLine(workplace, AnyCommandLine(generator), guard);
    }
    return wrong.empty() ? CheckLanguageCode(workplace, AnyLanguageCode(generator)) : wrong;
}

bool Passes(Workplace& workplace, std::uint32_t seed, const std::string& document,
            Generator& generator) {
    NoteInput(seed, document);
    std::string wrong = CheckAll(workplace, document, generator);
    if (wrong.empty() && seed % HeapCheckInterval == 0 && !HeapsAreSound()) {
        wrong = "a heap is damaged (by this document or one shortly before)";
    }
    if (!wrong.empty()) {
        ReportFailure(wrong);
    }
    return wrong.empty();
}

bool KeptDocumentsPass(Workplace& workplace, const std::vector<KeptDocument>& kept) {
    for (const KeptDocument& document : kept) {
        for (std::uint32_t seed = 0; seed < SeedsOfAKeptDocument; ++seed) {
            Generator generator(seed);
            if (!Passes(workplace, seed, document.bytes, generator)) {
                std::printf("the kept document %ls\n", document.name.c_str());
                return false;
            }
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
                                " s | 0 failures |\n";
        if (!WriteFileBytes(options.reportPath, row)) {
            std::printf("cannot write the report\n");
        }
    }
}

int Run(const Options& options) {
    Workplace workplace{GuardedMemory(TextCapacity), GuardedMemory(TextCapacity), {}, 0};
    const std::vector<KeptDocument> kept = ReadKeptDocuments(options.keptFolder);
    std::vector<std::string> bases;
    bases.reserve(kept.size());
    for (const KeptDocument& document : kept) {
        bases.push_back(document.bytes);
    }
    std::printf("fuzz: %zu kept documents, then from --seed %" PRIu32 " on\n", kept.size(),
                options.seed);
    static_cast<void>(std::fflush(stdout));
    WatchForCrashes(options.saveFolder);
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
        // A crash while the document is made is one of the tests' own.
        NoteInput(seed, {});
        const std::string document = AnyDocument(generator, bases);
        if (!Passes(workplace, seed, document, generator)) {
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
            "                    [--save FOLDER] [--report FILE]\n");
        return 2;
    }
    return morvane::test::Run(*options);
}
