#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include "soak/steps.h"
#include "support/printed.h"
#include "support/settings_reference.h"
#include "support/window_state.h"

namespace morvane::test {
namespace {

constexpr WORD ApplyNowCommand = 1001;
constexpr WORD AlwaysOnTopCommand = 1002;
constexpr WORD TogglePinCommand = 2500;  // + row
constexpr int PassesWhileOpen = 3;
constexpr std::size_t MostEntries = 100;

// "Über" in UTF-8. Octal escapes, because a hexadecimal one would swallow the b.
constexpr std::string_view UmlautLine = "\303\234ber";

// The first two characters of a protected title, in UTF-8.
constexpr std::string_view CredentialsLine = "\350\263\207\346\240\274";

// No size exceeds what a window can have on this screen.
constexpr std::string_view Lines[] = {
    "Alpha",
    "alpha",
    "ALPHA NOTES",
    "Beta",
    "beta 320 240",
    "Note",
    "notepad",
    "Notepad\t400\t0",
    "Gamma\t0\t300",
    "User",
    "Consent",
    "Windows",
    CredentialsLine,
    "x",
    UmlautLine,
    "xxxx\t200\t200",
    "Report",
    "Delta\tx",
    "a",
    "# comment",
    "",
    "Alpha\t500\t400",
    "credential",
    "#general",
    "no such title",
    "  e  ",
    "alpha notes 350 260",
};

bool Always(const Churn& /*churn*/) {
    return true;
}

bool IsText(const Churn& churn) {
    return churn.settings.State() == SettingsState::Text;
}

bool HasBytes(const Churn& churn) {
    return IsText(churn) && !churn.settings.Bytes().empty();
}

bool IsLocked(const Churn& churn) {
    const SettingsState state = churn.settings.State();
    return state == SettingsState::Locked || state == SettingsState::WriteLocked;
}

bool IsUnlocked(const Churn& churn) {
    return !IsLocked(churn);
}

bool CanBecomeAFolder(const Churn& churn) {
    return IsUnlocked(churn) && churn.settings.State() != SettingsState::Folder;
}

// A step that is possible while the condition holds.
template <bool (*Condition)(const Churn&), void (*Change)(Churn&)>
bool While(Churn& churn) {
    const bool possible = Condition(churn);
    if (possible) {
        Change(churn);
    }
    return possible;
}

std::string AnyText(Generator& generator, bool pinning) {
    const std::string_view end = generator.Below(4) == 0 ? "\r\n" : "\n";
    std::string text;
    if (!pinning || generator.Below(2) == 0) {
        text += pinning ? "@pinning=1" : "@pinning=off";
        text += end;
    }
    for (std::size_t lines = generator.Below(8); lines > 0; --lines) {
        text += generator.OneOf(Lines);
        text += end;
    }
    return text;
}

void Edit(Churn& churn) {
    churn.settings.Replace(AnyText(churn.generator, churn.generator.Below(8) != 0));
    Note(churn, Printed(churn.settings.Bytes()));
}

// Fills the list to about the limit, so that sometimes there is no room for another entry. Only the
// last lines can match a window, and the reader drops those beyond the limit.
void FillTheList(Churn& churn) {
    constexpr std::size_t Near = 3;
    const std::size_t count = MostEntries - Near + churn.generator.Below(2 * Near);
    std::string text;
    for (std::size_t entry = 0; entry < count; ++entry) {
        text += "nobody " + std::to_string(entry) + "-\n";
    }
    text += AnyText(churn.generator, true);
    churn.settings.Replace(text);
    Note(churn, "with " + std::to_string(churn.settings.Readable().entries.size()));
}

// Changes nothing else, so that only the switch can release windows.
void FlipInTheFile(Churn& churn) {
    PinList list = churn.settings.Readable();
    list.pinning = !list.pinning;
    churn.settings.Replace(ReferenceFormat(list));
}

void Truncate(Churn& churn) {
    churn.settings.Truncate(churn.generator.Below(churn.settings.Bytes().size()));
    Note(churn, Printed(churn.settings.Bytes()));
}

void Append(Churn& churn) {
    churn.settings.Append(AnyText(churn.generator, true));
    Note(churn, Printed(churn.settings.Bytes()));
}

void Delete(Churn& churn) {
    churn.settings.Delete();
}

void PutFolderInPlace(Churn& churn) {
    churn.settings.PutFolderInPlace();
}

void Lock(Churn& churn) {
    const bool againstAll = churn.generator.Below(2) == 0;
    Note(churn, againstAll ? "against all" : "against writing");
    churn.settings.Lock(againstAll ? SettingsState::Locked : SettingsState::WriteLocked);
}

void Unlock(Churn& churn) {
    churn.settings.Unlock();
}

void ApplyNow(Churn& churn) {
    churn.driver->RunCommand(ApplyNowCommand);
    RunModelPass(churn.model, churn.settings.Readable());
}

// The program changes and saves the list it read last. If it cannot save, the next pass uses the
// file again.
void FlipByCommand(Churn& churn) {
    churn.driver->RunCommand(AlwaysOnTopCommand);
    PinList list = churn.model.list;
    list.pinning = !list.pinning;
    Note(churn, list.pinning ? "on" : "off");
    churn.settings.ExpectSaved(list);
    if (list.pinning) {
        RunModelPass(churn.model, churn.settings.Readable());
    } else {
        ReleaseModel(churn.model);
    }
}

// Like the program, adds an entry for a title that has none if there is room, and removes the entry
// otherwise. Saves only changes.
bool ToggleRow(Churn& churn) {
    std::vector<std::wstring> titles;
    for (const ModelWindow& window : churn.model.windows) {
        if (window.visible && !window.owned && !window.title.empty()) {
            titles.push_back(SeenTitle(window.title));
        }
    }
    if (titles.empty()) {
        return false;
    }
    const std::wstring title = titles[churn.generator.Below(titles.size())];
    Note(churn, Printed(title.substr(0, 30)));
    const std::vector<std::wstring> rows = RowTitles();
    const auto row = std::find(rows.begin(), rows.end(), title);
    if (row == rows.end()) {
        churn.wrong = "  a window has no row\n";
        return true;
    }
    churn.driver->RunCommand(
        static_cast<WORD>(TogglePinCommand + std::distance(rows.begin(), row)));
    PinList list = churn.model.list;
    const int entry = ReferenceBestEntry(list, title);
    if (entry >= 0) {
        list.entries.erase(std::next(list.entries.begin(), entry));
    } else if (list.entries.size() < MostEntries) {
        list.entries.push_back({title, 0, 0});
    } else {
        ++churn.counts.refusedAdditions;
    }
    if (entry >= 0 || list.entries.size() > churn.model.list.entries.size()) {
        churn.settings.ExpectSaved(list);
    }
    if (entry >= 0) {
        ReleaseModel(churn.model);
    }
    RunModelPass(churn.model, churn.settings.Readable());
    return true;
}

void OpenMenu(Churn& churn) {
    churn.driver->OpenMenu();
    churn.driver->RunPasses(PassesWhileOpen);
    churn.driver->CloseMenu();
    ++churn.counts.menus;
}

void OpenAbout(Churn& churn) {
    churn.driver->OpenAbout();
    churn.driver->RunPasses(PassesWhileOpen);
    churn.driver->CloseAbout();
    ++churn.counts.abouts;
}

}  // namespace

const Step ProgramSteps[ProgramStepCount] = {
    {"edit", 110, While<IsUnlocked, Edit>},
    {"fill the list", 16, While<IsUnlocked, FillTheList>},
    {"flip the switch in the file", 40, While<IsText, FlipInTheFile>},
    {"truncate", 15, While<HasBytes, Truncate>},
    {"append", 30, While<IsText, Append>},
    {"delete the file", 10, While<IsText, Delete>},
    {"put a folder in its place", 8, While<CanBecomeAFolder, PutFolderInPlace>},
    {"lock the file", 15, While<IsText, Lock>},
    {"unlock the file", 60, While<IsLocked, Unlock>},
    {"apply now", 20, While<Always, ApplyNow>},
    {"flip the switch by command", 50, While<Always, FlipByCommand>},
    {"toggle a row", 60, ToggleRow},
    {"open the menu", 20, While<Always, OpenMenu>},
    {"open About", 8, While<Always, OpenAbout>},
};

}  // namespace morvane::test
