#include "kit/step.h"

#include <algorithm>
#include <sstream>

#include "kit/level.h"

namespace morvane::kit {

const std::vector<Step>& Steps() {
    static const std::vector<Step> steps = {
        {"A junction in the data folder goes with --remove-data, and its target stays",
         "DataRemovalTest.LinksInTheFolder*:DataFolderTest.NothingIsDeletedThroughALink"},
        {"Nothing is read, written or removed through a junction in place of the data folder",
         "DataRemovalTest.LinkInPlaceOfTheFolderIsLeftAlone:LinkedDataFolderTest.*:"
         "DataFolderTest.NothingIsReadOrWrittenThroughALink"},
        {"Read-only files and folders go with --remove-data",
         "DataRemovalTest.ReadOnlyAndHiddenItemsGo"},
        {"Exit removes the icon, without the pointer passing over it",
         "ExitTest.IconIsGoneWhenTheProcessEnds:ExitTest.IconIsRemovedByTheProgramItself"},
        {"Start with Windows makes and removes the shortcut",
         "MenuCommandsTest.StartWithWindowsMakesAndRemovesTheShortcut"},
        {"A read-only shortcut stays, and its removal is no failure",
         "StartupShortcutTest.LockedAndReadOnlyShortcutsStay:"
         "StartFaultsTest.ShortcutThatCannotBeRemovedFailsNothing"},
        {"Open settings shows the file in Notepad, also where its path has blanks",
         "OpenSettingsTest.NotepadShowsTheFile:OpenSettingsTest.SpacesInThePathDoNotSplitIt"},
        {"The file is in a redirected AppData folder",
         "DataFolderPathTest.FolderFollowsTheApplicationData:"
         "DataFolderTest.FolderMovedWhileRunningIsFollowed"},
        {"Either button opens the menu beside the icon; Escape or a click elsewhere closes it",
         "MenuOpenTest.EitherButtonOpensTheMenuBesideTheIcon:"
         "MenuOpenTest.EscapeDismissesTheMenuAndLeavesNothingBehind:"
         "MenuOpenTest.ClickElsewhereDismissesTheMenu"},
        {"The menu and its submenu stay above a pinned window and can be used",
         "MenuRunningTest.PinnedWindowOverTheWholeScreenHidesNothing:"
         "MenuRunningTest.CommandsOfACoveredMenuCanBeChosen:"
         "MenuRunningTest.SubmenuStaysAboveItsMenu"},
        {"Exit while About is open closes it and ends the process",
         "AboutTest.ExitChosenOverItEndsTheProcess"},
        {"Libraries beside Morvane.exe are not loaded", "SystemLibraryTest.*"},
        {"A pinned window stays above the others, and the keyboard focus does not jump to it",
         "ZOrderTest.PinnedWindowStaysAboveAClickedOrdinaryOne:"
         "ZOrderTest.ClickOnALowerEntryIsUndoneWithoutTakingTheKeyboard"},
    };
    return steps;
}

std::string UnknownTests(const Step& step, const std::vector<Test>& all) {
    std::istringstream patterns(step.tests);
    for (std::string pattern; std::getline(patterns, pattern, ':');) {
        if (std::none_of(all.begin(), all.end(), [&pattern](const Test& test) {
                return Matches(FullName(test), pattern);
            })) {
            return pattern;
        }
    }
    return {};
}

bool IsDone(const Step& step, const std::vector<Test>& all, const std::vector<Result>& results) {
    const auto wanted = std::count_if(all.begin(), all.end(), [&step](const Test& test) {
        return Matches(FullName(test), step.tests);
    });
    const auto passed =
        std::count_if(results.begin(), results.end(), [&step](const Result& result) {
            return result.outcome == Outcome::Passed && Matches(FullName(result.test), step.tests);
        });
    return wanted > 0 && passed == wanted;
}

}  // namespace morvane::kit
