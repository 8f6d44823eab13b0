#include "fuzz/kept_documents.h"

#include <algorithm>
#include <string_view>

#include "base/owners.h"
#include "base/win.h"
#include "fuzz/number.h"
#include "support/test_files.h"

namespace morvane::test {
namespace {

constexpr std::wstring_view Suffix = L".txt";
constexpr std::wstring_view SeedMark = L"-seed-";

std::optional<std::uint32_t> SeedOf(const std::wstring& name) {
    const std::size_t mark = name.rfind(SeedMark);
    if (mark == std::wstring::npos) {
        return std::nullopt;
    }
    const std::size_t begin = mark + SeedMark.size();
    return SeedFromText(name.substr(begin, name.size() - Suffix.size() - begin));
}

}  // namespace

std::vector<KeptDocument> ReadKeptDocuments(const std::wstring& folder) {
    std::vector<KeptDocument> kept;
    WIN32_FIND_DATAW found{};
    const std::wstring start = folder + L"\\";
    const FindHandle search(FindFirstFileW((start + L"*.txt").c_str(), &found));
    for (BOOL more = search ? TRUE : FALSE; more != FALSE;
         more = FindNextFileW(search.get(), &found)) {
        const std::wstring name = static_cast<const wchar_t*>(found.cFileName);
        std::optional<std::string> bytes = ReadFileBytes(start + name);
        if (!bytes) {
            return {};
        }
        kept.push_back({name, *std::move(bytes), SeedOf(name)});
    }
    std::sort(kept.begin(), kept.end(),
              [](const KeptDocument& a, const KeptDocument& b) { return a.name < b.name; });
    return kept;
}

}  // namespace morvane::test
