#!/usr/bin/env bash
#
# Shows the program at its main job, with three real programs in a private Wine session: which windows
# are on top before and after edits of the settings file. Fails if any step does not work.
#
# If a display is available, the session is a window on it and lasts until Morvane exits. Otherwise
# it has a virtual screen and ends on its own.

set -euo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
# shellcheck source=tests/session/wine_session.sh
source "$ROOT/tests/session/wine_session.sh"

PROGRAM=$ROOT/build/release/Morvane.exe
REPORT=$ROOT/build/release/window_report.exe
PICTURES=build/run
PATIENCE=15   # seconds to wait before giving up
MORVANE_PID=''

say() {
    printf '\n%s\n' "$*"
}

fail() {
    echo "run: FAILED: $*" >&2
    exit 1
}

report() {
    wine "$REPORT" "$@"
}

# Waits until the expectations hold, then lists the windows.
show() {
    report wait "$PATIENCE" "$@" || fail "the windows are not as expected"
    report list
}

edit_settings() {
    session_write_settings "$@"
    sed 's/^/    | /' "$SETTINGS"
}

# Uses the current display if it responds, else a virtual one.
choose_screen() {
    HAND_DISPLAY=''
    [[ ${DISPLAY:-} ]] && timeout 5 xdotool getdisplaygeometry >/dev/null 2>&1 || return 0
    HAND_DISPLAY=$DISPLAY
    # The session has its own home folder, where the display's key would not be found.
    HAND_KEY=${XAUTHORITY:-$HOME/.Xauthority}
    session_start_screen() {
        export DISPLAY=$HAND_DISPLAY
        [[ ! -e $HAND_KEY ]] || export XAUTHORITY=$HAND_KEY
    }
}

# Takes the screenshot $1 once the pinned window is drawn in front. Where Notepad and WineMine
# overlap, at 705, 460, Notepad is white (1) and WineMine black (0); $2 is the expected value.
#
# Wine 8.0 draws a newly active window above all others, whatever its own order, until a request
# changes that order. With two pinned windows every pass does, putting one above the other in turn.
# With a single one the picture would stay wrong.
take_picture() {
    local picture=$PICTURES/$1 brightness=$2 desktop end=$((SECONDS + PATIENCE))
    mkdir -p "$ROOT/$PICTURES"
    # Only the session's window: the rest of a real display is private.
    desktop=$(xdotool search --onlyvisible --name '^session - Wine desktop$' | tail -n 1)
    while :; do
        import -window "$desktop" "$ROOT/$picture" || fail "no screenshot"
        # On a real display, something else may cover the spot.
        [[ -z $HAND_DISPLAY ]] || break
        [[ $(convert "$ROOT/$picture" -crop 1x1+705+460 -format '%[fx:mean]' info:) != "$brightness" ]] ||
            break
        ((SECONDS < end)) || fail "the pinned window is not drawn in front, see $picture"
    done
    echo "    screenshot: $picture"
}

end_morvane() {
    report close-hidden MorvaneHiddenWindow >/dev/null || fail "Morvane has no control window"
}

# Waits until Morvane exits and returns its exit status.
wait_for_morvane() {
    local status
    while :; do
        INTERRUPTED='' status=0
        wait "$MORVANE_PID" || status=$?
        # A trapped signal ends the wait, not the program.
        [[ $INTERRUPTED ]] || return "$status"
    done
}

open_windows() {
    session_start_program notepad
    session_start_program winemine
    session_start_program regedit
    report wait "$PATIENCE" ordinary:Notepad ordinary:WineMine ordinary:Registry ||
        fail "no windows to pin"
    report place Notepad 200 120 560 380
    report place WineMine 690 400 160 226
    report place Registry 100 380 420 260
}

show_pinning() {
    say "1. Three programs are open, Morvane is not running. From front to back:"
    report activate WineMine
    show ordinary:Notepad ordinary:Registry active:WineMine above:WineMine:Notepad

    say "2. The settings file names Notepad and the Registry Editor, and Morvane starts:"
    edit_settings '@pinning=1' 'Notepad' 'Registry Editor'
    session_start_program "$PROGRAM"
    MORVANE_PID=$!
    show topmost:Notepad topmost:Registry ordinary:WineMine above:Notepad:Registry

    say "   WineMine is brought to the front, but the two stay above it:"
    report activate Notepad
    report wait "$PATIENCE" active:Notepad || fail "Notepad does not become active"
    report activate WineMine
    show active:WineMine ordinary:WineMine above:Notepad:Registry above:Registry:WineMine
    take_picture morvane.png 1
}

show_hand_edits() {
    say "3. The file is edited by hand to switch pinning off, and the two are released:"
    edit_settings '@pinning=0' 'Notepad' 'Registry Editor'
    show ordinary:Notepad ordinary:Registry ordinary:WineMine

    say "4. It is edited again, pinning on and WineMine in place of Notepad:"
    edit_settings '@pinning=1' 'WineMine' 'Registry Editor'
    show topmost:WineMine topmost:Registry ordinary:Notepad above:WineMine:Registry

    say "   Notepad is brought to the front, but the two stay above it:"
    report activate Notepad
    show active:Notepad ordinary:Notepad above:WineMine:Registry above:Registry:Notepad
    take_picture morvane-edited.png 0
}

# The user may have done anything meanwhile, so only Morvane's exit is checked.
stay() {
    local status=0
    trap 'INTERRUPTED=1; end_morvane' INT
    say "Morvane runs in the window \"session - Wine desktop\". Try it: the settings file is"
    echo "    $SETTINGS"
    echo "The session lasts until Morvane exits. Ctrl+C here asks it to."
    wait_for_morvane || status=$?
    trap 'exit 130' INT
    say "Morvane has exited with code $status. From front to back:"
    report list
    ((status == 0)) || fail "Morvane did not exit properly"
    ! report list | grep -q '^ *ON TOP' || fail "a window was left on top"
}

finish() {
    local status=0
    say "5. Morvane is asked to exit, and nothing stays on top:"
    end_morvane
    wait_for_morvane || status=$?
    ((status == 0)) || fail "Morvane's exit code is $status"
    show ordinary:WineMine ordinary:Notepad ordinary:Registry
}

(($# == 0)) || { echo "usage: ${0##*/}" >&2; exit 2; }
cmake --build "$ROOT/build/release" --target window_report
choose_screen
session_close_at_exit
session_open
open_windows
show_pinning
show_hand_edits
if [[ $HAND_DISPLAY ]]; then
    stay
else
    finish
fi
say "Everything is as expected."
