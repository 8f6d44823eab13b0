#include "fuzz/documents.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "support/settings_reference.h"

namespace morvane::test {
namespace {

using namespace std::string_view_literals;

// clang-format off
constexpr std::string_view Parts[] = {
    "\n", "\n", "\n", "\n", "\r\n", "\r", " ", " ", "  ", "\t", "\t", "\v", "\f", "\0"sv,
    "\xC2\x85", "\xC2\xA0", "\xE1\x9A\x80", "\xE2\x80\x83", "\xE3\x80\x80", "\xEF\xBB\xBF",
    "#", "\n#", "  # ", "@pinning", "@PINNING=", "@pinning=0", "=", "off", "False", "TRUE",
    "notepad", "Notepad", "NOTE", "Visual Studio", "x", "A", "Z", "[", "`", "{", "@",
    "\xC3\x89", "\xC3\xA9", "\xE8\xB3\x87", "\xF0\x9F\x98\x80", "\xEF\xBC\x91",
    "0", "00", "1", "12", "1280", "720", "0800", "8192", "8193", "99999", "2147483648",
    "4294967296", "18446744073709551617", "-5", "+5", "1.5", " 5 6\n", "\t5\t6\n", " 0 0\n",
    "\xFF", "\xE2", "\xE2\x82", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
};

// Valid documents and known traps, to be corrupted. What a seed stands for depends on them, so kept
// documents must not be added here.
constexpr std::string_view Bases[] = {
    "# comment\n@pinning=1\nnotepad\nVisual Studio Code\t1280\t720\nx 5 6\n",
    "@pinning=0\r\nNotepad\r\nReport\t0\t600\r\n\r\n# end\r\n",
    "\xEF\xBB\xBF# begins with a byte-order mark\n@pinning=0\nnotepad\n",
    "  # note\n\t#x 5 6\n#gone\r\n\r\n",
    "Report 2024 01 0 0\nReport\t2024\t01 0 0\na\t1 5 6\na\t5\t6\t7\n",
    "@pinning=\n@PINNING= off \n@pinning = 0\n@pinning=00\n@pinning=0\0\n @pinning=FALSE\r\r\n"sv,
    "a\x80 5 6\n\xE2\x82\n\xED\xA0\x80\t1\t2\n\xC0\xAF\0\n\xF4\x90\x80\x80 08 9999999999"sv,
    "\xE8\xB3\x87\xE6\xA0\xBC \xE3\x80\x80  5 \t 6\n\xC2\xA0x\xC2\xA0\t 5 \t 6 \n  a  1  2  \n",
};

constexpr std::wstring_view TitleParts[] = {
    L"notepad", L"Notepad", L"NOTE", L" - ", L" ", L"  ", L"\t", L"\n", L"\r", L"#", L"@pinning=",
    L"@pinning=0", L"x", L"A", L"Z", L"[", L"{", L"5", L"1280 720", L"\t5\t6", L" 5 6", L"\u3000",
    L"\u00A0", L"\u0085", L"\u00C9", L"\u00E9", L"\u0130", L"\u212A", L"\U0001F600", L"\xD83D",
    L"\xDE00", L"\0"sv, L"\uFFFD", L"\uFEFF", L"\u8CC7\u683C",
};

constexpr std::wstring_view CommandParts[] = {
    L"--install-startup", L"--remove-startup", L"--remove-data", L"--INSTALL-startup",
    L"--Remove-Data", L"--install", L"-startup", L"--remove", L"-data", L"--", L"-", L" ", L"\"",
    L"x", L"\u0130", L"\\", L"C:\\Program Files\\",
};

constexpr std::wstring_view CodeParts[] = {
    L"en", L"us", L"ja", L"jp", L"zh", L"cn", L"tw", L"ko", L"kr", L"es", L"fr", L"de", L"pt",
    L"br", L"ru", L"-", L"-", L"_", L" ", L"EN", L"Zh", L"x", L"\u0130", L"\u212A",
};
// clang-format on

template <typename Text, typename Pool>
Text Joined(Generator& generator, const Pool& pool, std::size_t most) {
    Text text;
    for (std::size_t count = generator.Below(most + 1); count > 0; --count) {
        text += generator.OneOf(pool);
    }
    return text;
}

std::string RandomBytes(Generator& generator) {
    std::string bytes;
    for (std::size_t count = generator.Below(200); count > 0; --count) {
        bytes += static_cast<char>(generator.Below(256));
    }
    return bytes;
}

// Lines of about the length limit, so that the cut falls on anything.
std::string LongLines(Generator& generator) {
    constexpr std::string_view Fillers[] = {"x", "\xC3\xA9", "\xE8\xB3\x87", "\xF0\x9F\x98\x80"};
    std::string document;
    for (std::size_t lines = 1 + generator.Below(3); lines > 0; --lines) {
        const std::string_view filler = generator.OneOf(Fillers);
        const std::size_t units = filler.size() == 4 ? 2 : 1;
        for (std::size_t count = (500 + generator.Below(12)) / units; count > 0; --count) {
            document += filler;
        }
        document += Joined<std::string>(generator, Parts, 12);
        document += '\n';
    }
    return document;
}

std::string ManyLines(Generator& generator) {
    std::string document;
    for (std::size_t lines = 90 + generator.Below(40); lines > 0; --lines) {
        document += Joined<std::string>(generator, Parts, 3);
        document += '\n';
    }
    return document;
}

void Corrupt(Generator& generator, std::string& document) {
    const std::size_t at = generator.Below(document.size() + 1);
    const std::size_t length = std::min(generator.Below(24), document.size() - at);
    switch (generator.Below(6)) {
        case 0:
            document.insert(at, generator.OneOf(Parts));
            break;
        case 1:
            document.erase(at, length);
            break;
        case 2:
            document.insert(generator.Below(document.size() + 1), document.substr(at, length));
            break;
        case 3:
            document.resize(at);
            break;
        case 4:
            document.replace(at, length, RandomBytes(generator).substr(0, length));
            break;
        default:
            if (at < document.size()) {
                const auto bit = static_cast<unsigned char>(1U << generator.Below(8));
                document[at] = static_cast<char>(static_cast<unsigned char>(document[at]) ^ bit);
            }
            break;
    }
}

std::string UncorruptedDocument(Generator& generator) {
    switch (generator.Below(8)) {
        case 0:
            return std::string(generator.OneOf(Bases));
        case 1:
            return ReferenceFormat(AnyTitleList(generator));
        case 2:
            return LongLines(generator);
        case 3:
            return ManyLines(generator);
        case 4:
            return RandomBytes(generator);
        default:
            return Joined<std::string>(generator, Parts, 60);
    }
}

}  // namespace

std::string AnyDocument(Generator& generator) {
    std::string document = UncorruptedDocument(generator);
    if (generator.Below(2) == 0) {
        for (std::size_t faults = 1 + generator.Below(8); faults > 0; --faults) {
            Corrupt(generator, document);
        }
    }
    return document;
}

PinList AnyTitleList(Generator& generator) {
    constexpr int Sizes[] = {0, 0, 0, 1, 5, 720, 8192};
    PinList list;
    list.pinning = generator.Below(2) == 0;
    const std::size_t most = generator.Below(8) == 0 ? MaxPinEntries : 6;
    for (std::size_t count = generator.Below(most + 1); count > 0; --count) {
        PinEntry entry{Joined<std::wstring>(generator, TitleParts, 6)};
        entry.minWidth = generator.OneOf(Sizes);
        entry.minHeight = generator.OneOf(Sizes);
        list.entries.push_back(entry);
    }
    return list;
}

std::wstring AnyTitle(Generator& generator, const PinList& list) {
    std::wstring title = Joined<std::wstring>(generator, TitleParts, 4);
    if (!list.entries.empty() && generator.Below(4) != 0) {
        std::wstring pattern = generator.OneOf(list.entries).pattern;
        for (wchar_t& unit : pattern) {
            // This also changes characters next to the letters, which must not fold.
            if (unit < 0x80 && generator.Below(3) == 0) {
                unit = static_cast<wchar_t>(unit ^ 0x20U);
            }
        }
        if (generator.Below(3) == 0) {
            pattern.resize(generator.Below(pattern.size() + 1));
        }
        title += pattern;
        title += Joined<std::wstring>(generator, TitleParts, 2);
    }
    return title;
}

std::wstring AnyCommandLine(Generator& generator) {
    return Joined<std::wstring>(generator, CommandParts, 8);
}

std::wstring AnyLanguageCode(Generator& generator) {
    return Joined<std::wstring>(generator, CodeParts, 3);
}

}  // namespace morvane::test
