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
    const std::wstring_view text = GetText(id);
    const std::size_t position = text.find(Placeholder);
    if (position == std::wstring_view::npos) {
        return std::wstring(text);
    }
    return std::wstring(text.substr(0, position))
        .append(argument)
        .append(text.substr(position + Placeholder.size()));
}

}  // namespace morvane
