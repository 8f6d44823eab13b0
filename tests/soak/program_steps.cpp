#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include "soak/steps.h"
#include "support/settings_reference.h"
#include "support/window_state.h"
#include "unit/printed.h"

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

bool IsUnlocked(const Churn& churn) {
    const SettingsState state = churn.settings.State();
    return state != SettingsState::Locked && state != SettingsState::WriteLocked;
}

bool IsText(const Churn& churn) {
    return churn.settings.State() == SettingsState::Text;
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

bool Edit(Churn& churn, std::string& /*wrong*/) {
    if (!IsUnlocked(churn)) {
        return false;
    }
    churn.settings.Replace(AnyText(churn.generator, churn.generator.Below(8) != 0));
    Note(churn, Printed(churn.settings.Bytes()));
    return true;
}

// Fills the list to about the limit, so that sometimes there is no room for another entry. Only the
// last lines can match a window, and the reader drops those beyond the limit.
bool FillTheList(Churn& churn, std::string& /*wrong*/) {
    if (!IsUnlocked(churn)) {
        return false;
    }
    constexpr std::size_t Near = 3;
    const std::size_t count = MostEntries - Near + churn.generator.Below(2 * Near);
    std::string text;
    for (std::size_t entry = 0; entry < count; ++entry) {
        text += "nobody " + std::to_string(entry) + "-\n";
    }
    text += AnyText(churn.generator, true);
    churn.settings.Replace(text);
    Note(churn, "with " + std::to_string(churn.settings.Readable().entries.size()));
    return true;
}

// Changes nothing else, so that only the switch can release windows.
bool FlipInTheFile(Churn& churn, std::string& /*wrong*/) {
    if (!IsText(churn)) {
        return false;
    }
    PinList list = churn.settings.Readable();
    list.pinning = !list.pinning;
    churn.settings.Replace(ReferenceFormat(list));
    return true;
}

bool Truncate(Churn& churn, std::string& /*wrong*/) {
    if (!IsText(churn) || churn.settings.Bytes().empty()) {
        return false;
    }
    churn.settings.Truncate(churn.generator.Below(churn.settings.Bytes().size()));
    Note(churn, Printed(churn.settings.Bytes()));
    return true;
}

bool Append(Churn& churn, std::string& /*wrong*/) {
    if (!IsText(churn)) {
        return false;
    }
    churn.settings.Append(AnyText(churn.generator, true));
    Note(churn, Printed(churn.settings.Bytes()));
    return true;
}

bool Delete(Churn& churn, std::string& /*wrong*/) {
    if (!IsText(churn)) {
        return false;
    }
    churn.settings.Delete();
    return true;
}

bool PutFolderInPlace(Churn& churn, std::string& /*wrong*/) {
    if (!IsUnlocked(churn) || churn.settings.State() == SettingsState::Folder) {
        return false;
    }
    churn.settings.PutFolderInPlace();
    return true;
}

bool Lock(Churn& churn, std::string& /*wrong*/) {
    if (!IsText(churn)) {
        return false;
    }
    const bool againstAll = churn.generator.Below(2) == 0;
    Note(churn, againstAll ? "against all" : "against writing");
    churn.settings.Lock(againstAll ? SettingsState::Locked : SettingsState::WriteLocked);
    return true;
}

bool Unlock(Churn& churn, std::string& /*wrong*/) {
    if (IsUnlocked(churn)) {
        return false;
    }
    churn.settings.Unlock();
    return true;
}

bool ApplyNow(Churn& churn, std::string& /*wrong*/) {
    churn.driver->RunCommand(ApplyNowCommand);
    RunModelPass(churn.model, churn.settings.Readable());
    return true;
}

// The program changes and saves the list it read last. If it cannot save, the next pass uses the
// file again.
bool FlipByCommand(Churn& churn, std::string& /*wrong*/) {
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
    return true;
}

// The rows of the program's window list: visible windows that have a title and no owner.
std::vector<std::wstring> RowTitles() {
    std::vector<std::wstring> titles;
    for (const HWND window : TopLevelWindows()) {
        const std::wstring title = SeenTitle(WindowTitle(window));
        if (IsWindowVisible(window) != FALSE && GetWindow(window, GW_OWNER) == nullptr &&
            !title.empty()) {
            titles.push_back(title);
        }
    }
    std::sort(titles.begin(), titles.end());
    return titles;
}

// Like the program, adds an entry for a title that has none if there is room, and removes the entry
// otherwise. Saves only changes.
bool ToggleRow(Churn& churn, std::string& wrong) {
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
        wrong = "  a window has no row\n";
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

bool OpenMenu(Churn& churn, std::string& /*wrong*/) {
    churn.driver->OpenMenu();
    churn.driver->RunPasses(PassesWhileOpen);
    churn.driver->CloseMenu();
    ++churn.counts.menus;
    return true;
}

bool OpenAbout(Churn& churn, std::string& /*wrong*/) {
    churn.driver->OpenAbout();
    churn.driver->RunPasses(PassesWhileOpen);
    churn.driver->CloseAbout();
    ++churn.counts.abouts;
    return true;
}

// Renames a window while the menu's own message loop runs.
bool RenameUnderTheMenu(Churn& churn, std::string& wrong) {
    if (churn.model.windows.empty()) {
        return false;
    }
    ModelWindow& window = churn.model.windows[churn.generator.Below(churn.model.windows.size())];
    churn.driver->OpenMenu();
    window.title = churn.generator.Below(2) == 0 ? L"Alpha" : L"Omega";
    Note(churn, std::to_string(NumberFromWindow(window.window)) + " to " + Printed(window.title));
    churn.actors.at(window.actor).SetTitle(window.window, window.title);
    RunPasses(churn, 1);
    wrong = CheckModel(churn);
    churn.driver->CloseMenu();
    ++churn.counts.menus;
    return true;
}

}  // namespace

const Step ProgramSteps[ProgramStepCount] = {
    {"edit", 110, Edit},
    {"fill the list", 16, FillTheList},
    {"flip the switch in the file", 40, FlipInTheFile},
    {"truncate", 15, Truncate},
    {"append", 30, Append},
    {"delete the file", 10, Delete},
    {"put a folder in its place", 8, PutFolderInPlace},
    {"lock the file", 15, Lock},
    {"unlock the file", 60, Unlock},
    {"apply now", 20, ApplyNow},
    {"flip the switch by command", 50, FlipByCommand},
    {"toggle a row", 60, ToggleRow},
    {"open the menu", 20, OpenMenu},
    {"open About", 8, OpenAbout},
    {"rename under the menu", 10, RenameUnderTheMenu},
};

}  // namespace morvane::test
