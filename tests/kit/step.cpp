#include "kit/step.h"

#include <algorithm>

#include "kit/level.h"

namespace morvane::kit {

const std::vector<Step>& Steps() {
    static const std::vector<Step> steps = {
        {"A junction in the data folder goes with --remove-data, and its target stays",
         {"DataRemovalTest.LinksInTheFolder*"}},
        {"Nothing is read, written or removed through a junction in place of the data folder",
         {"DataRemovalTest.LinkInPlaceOfTheFolderIsLeftAlone",
          "DataFolderPathTest.NothingIsReadOrWrittenThroughALink",
          "DataFolderTest.NothingIsReadWrittenOrDeletedThroughALink"}},
        {"Read-only files and folders go with --remove-data",
         {"DataRemovalTest.ReadOnlyAndHiddenItemsGo"}},
        {"Exit removes the icon, without the pointer passing over it",
         {"ExitTest.WindowsAreOrdinaryAndTheIconIsGoneWhenTheProcessEnds"}},
        {"Start with Windows makes and removes the shortcut",
         {"*MenuCommandsTest.StartWithWindowsMakesAndRemovesTheShortcut*"}},
        {"A read-only shortcut stays, and its removal is no failure",
         {"StartupShortcutTest.LockedAndReadOnlyShortcutsStay",
          "StartFaultsTest.ShortcutThatCannotBeRemovedFailsNothing"}},
        {"Open settings shows the file in Notepad, also where its path has blanks",
         {"SettingsEditorTest.NotepadShowsTheFileAndItIsReadAgain",
          "SettingsEditorTest.DeletedFileIsRewrittenBeforeNotepadOpensItAtAPathWithBlanks"}},
        {"The file is in a redirected AppData folder",
         {"DataFolderPathTest.FolderFollowsTheApplicationData",
          "DataFolderTest.FolderMovedWhileRunningIsFollowed"}},
        {"Either button opens the menu beside the icon; Escape or a click elsewhere closes it",
         {"MenuOpenTest.EitherButtonOpensTheMenuBesideTheIcon",
          "MenuOpenTest.EscapeLeavesTheSubmenuAndThenTheMenu",
          "MenuOpenTest.ClickElsewhereDismissesTheMenu"}},
        {"The menu and its submenu stay above a pinned window and can be used", {"CoveredTest.*"}},
        {"Exit while About is open closes it and ends the process",
         {"AboutTest.CommandsOfTheMenuWorkOverItAndExitEndsTheProcess"}},
        {"Libraries beside Morvane.exe are not loaded", {"SystemLibraryTest.*"}},
        {"A pinned window stays above the others, and the keyboard focus does not jump to it",
         {"ZOrderTest.PinnedWindowStaysAboveAClickedOrdinaryOne",
          "ZOrderTest.ClickOnALowerEntryIsUndoneWithoutTakingTheKeyboard"}},
    };
    return steps;
}

bool IsCovered(const Step& step, const std::vector<Result>& results) {
    return std::all_of(step.tests.begin(), step.tests.end(), [&results](const char* name) {
        const auto count = [&](bool onlyPassed) {
            return std::count_if(results.begin(), results.end(), [&](const Result& result) {
                return Matches(FullName(result.test), name) &&
                       (!onlyPassed || result.outcome == Outcome::Passed);
            });
        };
        return count(true) > 0 && count(true) == count(false);
    });
}

}  // namespace morvane::kit
