#include "i18n/strings.h"

#include "i18n/language.h"
#include "i18n/string_table.h"

namespace morvane {

const wchar_t* GetText(StringId id) {
    if (id < 0 || id >= StringCount) {
        return L"";
    }
    return LocalizedStringTable[id][static_cast<int>(CurrentLanguage())];
}

std::wstring FormatText(StringId id, std::wstring_view argument) {
    constexpr std::wstring_view Placeholder = L"{0}";
    std::wstring text = GetText(id);
    const std::size_t position = text.find(Placeholder);
    if (position != std::wstring::npos) {
        text.replace(position, Placeholder.size(), argument);
    }
    return text;
}

}  // namespace morvane
