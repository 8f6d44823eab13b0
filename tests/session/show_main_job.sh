#!/usr/bin/env bash
#
# Shows the program at its main job, with three real programs in a private Wine session: what is on
# top and what is not, before and after edits of the settings file. Succeeds only when all of it
# came about.
#
# With a reachable display the session is one window on it and stays until Morvane has ended;
# without one it has a virtual screen and ends by itself.

set -euo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
# shellcheck source=tests/session/wine_session.sh
source "$ROOT/tests/session/wine_session.sh"

PROGRAM=$ROOT/build/release/Morvane.exe
REPORT=$ROOT/build/release/window_report.exe
PICTURES=build/run
PATIENCE=15   # seconds until something that should happen counts as failed
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

# Waits until the expectations hold, and shows what is there to see then.
show() {
    report wait "$PATIENCE" "$@" || fail "the windows are not as they should be"
    report list
}

# Out of reach of the terminal's Ctrl+C, which is to reach this script alone.
start_program() {
    setsid wine "$@" </dev/null >/dev/null 2>&1 &
}

# Renamed into place: a pass that met a half-written file would take it at its word.
edit_settings() {
    printf '%s\n' "$@" >"$SETTINGS.new"
    mv "$SETTINGS.new" "$SETTINGS"
    sed 's/^/    | /' "$SETTINGS"
}

# The session's screen: the display at hand when it answers, else a virtual one.
choose_screen() {
    HAND_DISPLAY=''
    [[ ${DISPLAY:-} ]] && timeout 5 xdotool getdisplaygeometry >/dev/null 2>&1 || return 0
    HAND_DISPLAY=$DISPLAY
    # The session has another home folder, where the display's key would not be found.
    HAND_KEY=${XAUTHORITY:-$HOME/.Xauthority}
    session_start_screen() {
        export DISPLAY=$HAND_DISPLAY
        [[ ! -e $HAND_KEY ]] || export XAUTHORITY=$HAND_KEY
    }
}

# Takes the screenshot $1 once the pinned window is drawn in front. Where Notepad and WineMine
# overlap, at 705, 460, Notepad is white (1) and WineMine black (0): $2 says which is to be seen.
#
# Wine draws a window that becomes active above all others, whatever its own order of the windows
# says, until a request changes that order. With two pinned windows every pass does: each in turn
# is put above the other. With a single one the picture would stay wrong.
take_picture() {
    local picture=$PICTURES/$1 brightness=$2 desktop end=$((SECONDS + PATIENCE))
    mkdir -p "$ROOT/$PICTURES"
    # Only the session's own window: the rest of a display at hand is nobody's business.
    desktop=$(xdotool search --onlyvisible --name '^session - Wine desktop$' | tail -n 1)
    while :; do
        import -window "$desktop" "$ROOT/$picture" || fail "no screenshot"
        # On a display at hand, something else may lie over the spot.
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

# Returns the exit status of Morvane once it has ended.
wait_for_morvane() {
    local status
    while :; do
        INTERRUPTED='' status=0
        wait "$MORVANE_PID" || status=$?
        # A signal with a trap ends the wait, not the program.
        [[ $INTERRUPTED ]] || return "$status"
    done
}

open_windows() {
    local folder
    folder=$(wine cmd /c 'echo %APPDATA%' | tr -d '\r')
    SETTINGS=$(winepath -u "$folder")/Morvane/config.txt
    mkdir -p "$(dirname "$SETTINGS")"
    start_program notepad
    start_program winemine
    start_program regedit
    report wait "$PATIENCE" ordinary:Notepad ordinary:WineMine ordinary:Registry ||
        fail "no windows to pin"
    report place Notepad 200 120 560 380
    report place WineMine 690 400 160 226
    report place Registry 100 380 420 260
}

show_pinning() {
    say "1. Three programs are open, Morvane is not running. From the front to the back:"
    report activate WineMine
    show ordinary:Notepad ordinary:Registry active:WineMine above:WineMine:Notepad

    say "2. The settings file names Notepad and the Registry Editor, and Morvane is started:"
    edit_settings '@pinning=1' 'Notepad' 'Registry Editor'
    start_program "$PROGRAM"
    MORVANE_PID=$!
    show topmost:Notepad topmost:Registry ordinary:WineMine above:Notepad:Registry

    say "   WineMine is brought to the front, but the two stay before it:"
    report activate Notepad
    report wait "$PATIENCE" active:Notepad || fail "Notepad does not become active"
    report activate WineMine
    show active:WineMine ordinary:WineMine above:Notepad:Registry above:Registry:WineMine
    take_picture morvane.png 1
}

show_hand_edits() {
    say "3. The file is edited by hand, pinning off: the two are let go."
    edit_settings '@pinning=0' 'Notepad' 'Registry Editor'
    show ordinary:Notepad ordinary:Registry ordinary:WineMine

    say "4. Edited again, pinning on with WineMine in Notepad's place:"
    edit_settings '@pinning=1' 'WineMine' 'Registry Editor'
    show topmost:WineMine topmost:Registry ordinary:Notepad above:WineMine:Registry

    say "   Notepad is brought to the front, but the two stay before it:"
    report activate Notepad
    show active:Notepad ordinary:Notepad above:WineMine:Registry above:Registry:Notepad
    take_picture morvane-edited.png 0
}

# What the user did meanwhile is unknown: only what Morvane leaves behind is looked at.
stay() {
    local status=0
    trap 'INTERRUPTED=1; end_morvane' INT
    say "Morvane runs in the window \"session - Wine desktop\". Try it: the settings file is"
    echo "    $SETTINGS"
    echo "It goes on until Morvane ends; Ctrl+C here asks it to."
    wait_for_morvane || status=$?
    trap 'exit 130' INT
    say "Morvane has ended with exit code $status. From the front to the back:"
    report list
    ((status == 0)) || fail "Morvane has not ended properly"
    ! report list | grep -q '^ *ON TOP' || fail "a window was left on top"
}

finish() {
    local status=0
    say "5. Morvane is asked to end: nothing stays on top."
    end_morvane
    wait_for_morvane || status=$?
    ((status == 0)) || fail "Morvane's exit code is $status"
    show ordinary:WineMine ordinary:Notepad ordinary:Registry
}

(($# == 0)) || { echo "usage: ${0##*/}" >&2; exit 2; }
cmake --build "$ROOT/build/release" --target window_report
choose_screen
trap session_close EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM
session_open
open_windows
show_pinning
show_hand_edits
if [[ $HAND_DISPLAY ]]; then
    stay
else
    finish
fi
say "All as it should be."
