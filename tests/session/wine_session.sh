#!/usr/bin/env bash
#
# A private, disposable Windows session: a fresh Wine profile on its own virtual screen, with a
# desktop and a taskbar. Several can be open at once. The user's own profile, screen and home folder
# are not touched, and nothing is left when the session closes.
#
#   wine_session.sh run COMMAND [ARGUMENT...]   runs a command in a session and returns its status
#
# A script that sources it controls the session with session_open and session_close_at_exit. While
# it is open, the environment has DISPLAY, WINEPREFIX, HOME, the Wine switches,
# MORVANE_TEST_DISPOSABLE=1, MORVANE_TEST_KNOWN_SKIPS and MORVANE_TEST_LINKS, and SESSION_DIR is the
# session's own folder.
# MORVANE_SESSION_LOCALE chooses another display language than English.

SESSION_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
SESSION_TEMPLATE=$SESSION_ROOT/build/wine-template
SESSION_SCREEN=1280x800
SESSION_SKIPS=$SESSION_ROOT/tests/session/skips
SESSION_CJK_FONT=/usr/share/fonts/truetype/wqy/wqy-microhei.ttc

session_fail() {
    echo "session: $*" >&2
    return 1
}

# Kills every process whose environment names the profile $1 and returns once none is left. Wine's
# services detach themselves, so they cannot be found through parents or process groups.
session_kill_strays() {
    local profile=$1 round signal=TERM strays
    for round in {1..100}; do
        # Unset, or the search would find itself.
        mapfile -t strays < <(unset WINEPREFIX
            grep -lzxF "WINEPREFIX=$profile" /proc/[0-9]*/environ 2>/dev/null |
            cut -d / -f 3 | grep -vxF -e "$$" -e "$BASHPID")
        ((${#strays[@]})) || return 0
        ((round < 20)) || signal=KILL
        kill -"$signal" "${strays[@]}" 2>/dev/null
        sleep 0.1
    done
    session_fail "processes of $profile survive: ${strays[*]}"
}

session_stop_server() {
    local name folder
    WINEPREFIX=$1 timeout 20 wineserver -k 2>/dev/null
    WINEPREFIX=$1 timeout 20 wineserver -w 2>/dev/null
    session_kill_strays "$1" || return
    # The server leaves its socket's folder behind: the user's run-time folder has one for all
    # servers, /tmp one for each.
    name=server-$(printf '%s-%x' "$(stat -c %D "$1")" "$(stat -c %i "$1")")
    rm -rf "/run/user/$EUID/wine/$name"
    for folder in /tmp/wine-*/"$name"; do
        [[ ! -d $folder ]] || rm -rf "${folder%/*}"
    done
}

# Everything the template depends on; it is rebuilt when this changes.
session_template_stamp() {
    {
        WINEDEBUG=-all wine --version
        id -un
        ls -l /usr/share/wine/fonts "$SESSION_CJK_FONT"
        cat "${BASH_SOURCE[0]}"
    } 2>&1 | sha256sum
}

session_fill_template() {
    local -x WINEPREFIX=$1 HOME=$1/home
    local face
    wineboot -i || return
    # Wine 8.0 does not look for fonts in its own package. Without these there is no Tahoma for the
    # interface and no Marlett for check marks.
    cp /usr/share/wine/fonts/*.ttf "$WINEPREFIX/drive_c/windows/Fonts/" || return
    # Missing glyphs are looked up in another font only if the registry says so.
    for face in "Tahoma" "Tahoma Bold" "MS Shell Dlg" "MS Sans Serif" "Liberation Sans"; do
        wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontLink\SystemLink' \
            /v "$face" /t REG_MULTI_SZ /d "${SESSION_CJK_FONT##*/},WenQuanYi Micro Hei" /f || return
    done
    # A desktop window with a taskbar, as large as the screen.
    wine reg add 'HKCU\Software\Wine\Explorer' /v Desktop /d session /f || return
    wine reg add 'HKCU\Software\Wine\Explorer\Desktops' /v session /d "$SESSION_SCREEN" /f
}

# Makes the profile that every session starts from. Takes about ten seconds.
session_make_template() {
    local stamp=$1 new=$SESSION_TEMPLATE.new filled=0 link
    echo "session: preparing the Wine profile template" >&2
    rm -rf "$new" "$SESSION_TEMPLATE"
    mkdir -p "$new/home" || return
    session_fill_template "$new" </dev/null >"$SESSION_TEMPLATE.log" 2>&1 || filled=$?
    session_stop_server "$new" || return
    ((filled == 0)) || { session_fail "no profile template, see $SESSION_TEMPLATE.log"; return; }
    # The profile's Documents, Desktop, ... are links into the home folder; real folders instead
    # keep a session inside its profile.
    find "$new/drive_c/users" -type l -print0 | while IFS= read -r -d '' link; do
        rm "$link" && mkdir "$link"
    done
    rm -rf "${new:?}/home"
    printf '%s\n' "$stamp" >"$new/stamp"
    mv -T "$new" "$SESSION_TEMPLATE"
}

# Copies the template to the new profile $1. The Windows folder is never modified in place, so it is
# shared by hard links; the server rewrites the registry in place, so that is copied.
session_copy_template() {
    local profile=$1 stamp
    mkdir -p "$(dirname "$SESSION_TEMPLATE")" "$profile/drive_c" || return
    (
        flock 9 || exit
        stamp=$(session_template_stamp)
        if [[ $(cat "$SESSION_TEMPLATE/stamp" 2>/dev/null) != "$stamp" ]]; then
            # Close the lock for Wine's services, which may outlive this shell.
            session_make_template "$stamp" 9>&- || exit
        fi
        cd "$SESSION_TEMPLATE" &&
            { cp -al drive_c/windows "$profile/drive_c/" 2>/dev/null ||
                cp -a drive_c/windows "$profile/drive_c/"; } &&
            cp -a drive_c/[!w]* "$profile/drive_c/" &&
            cp -a dosdevices ./*.reg .update-timestamp "$profile/"
    ) 9>"$SESSION_TEMPLATE.lock"
}

# Makes the links that tests need: programs under Wine 8.0 cannot. The folder "Replaced" holds one in
# place of the program's folder, "Around" has some inside of it.
session_make_links() {
    local links=$SESSION_DIR/profile/drive_c/links
    mkdir -p "$links"/{Target,Replaced,Around/Morvane/a/b} &&
        ln -s ../Target "$links/Replaced/Morvane" &&
        ln -s ../../Target "$links/Around/Morvane/link" &&
        ln -s ../../../../Target "$links/Around/Morvane/a/b/link" &&
        export MORVANE_TEST_LINKS='C:\links'
}

# Starts a screen on the first free display and sets DISPLAY. One at a time, whoever starts it: two
# servers starting at once can want the same number, and one of them gives up.
session_start_screen() {
    local pipe=$SESSION_DIR/display number=''
    mkfifo "$pipe" || return
    {
        flock 9 || return
        Xvfb -displayfd 3 -screen 0 "${SESSION_SCREEN}x24" -nolisten tcp -noreset \
            3<>"$pipe" 9<&- </dev/null >"$SESSION_DIR/screen.log" 2>&1 &
        SESSION_SCREEN_PID=$!
        read -r -t 20 number <>"$pipe" || true
    } 9</tmp
    export DISPLAY=:$number
    [[ $number ]] || session_fail "no virtual screen: $(tail -n 3 "$SESSION_DIR/screen.log")"
}

session_open() {
    local variable version
    mkdir -p "$SESSION_ROOT/build/sessions" || return
    # On the template's file system, as hard links need.
    SESSION_DIR=$(mktemp -d "$SESSION_ROOT/build/sessions/XXXXXXXX") || return
    mkdir "$SESSION_DIR/home" "$SESSION_DIR/profile" || return
    for variable in $(compgen -e); do
        case $variable in
            LC_* | LANG | LANGUAGE | XDG_* | XAUTHORITY | WAYLAND_DISPLAY | MORVANE_LANG | WINE*)
                unset "$variable"
                ;;
        esac
    done
    # Without a UTF-8 locale Wine 8.0 cannot name files beyond ASCII; C makes the session English.
    export LC_ALL=C.UTF-8
    export HOME=$SESSION_DIR/home
    # Wine 10.0 aborts where it is set.
    unset TMPDIR
    export WINEDEBUG=-all
    # No offers to install add-ons, no debugger window that hangs on a crash, and no host menu
    # entries made from shortcuts: winemenubuilder holds a new shortcut open for a while.
    export WINEDLLOVERRIDES='mscoree=;mshtml=;winedbg.exe=d;winemenubuilder.exe=d'
    unset DISPLAY
    session_copy_template "$SESSION_DIR/profile" || return
    # The template is the same for all.
    export LC_ALL=${MORVANE_SESSION_LOCALE:-$LC_ALL}
    session_make_links || return
    session_start_screen || return
    export WINEPREFIX=$SESSION_DIR/profile
    export MORVANE_TEST_DISPOSABLE=1
    # The tests that this version of Wine cannot judge. Wine's drive Z: is the root folder.
    version=$(wine --version 2>/dev/null)
    export MORVANE_TEST_KNOWN_SKIPS=Z:$SESSION_SKIPS/${version%% *}.txt
    # A persistent server, and a first command that starts the services and the desktop. Otherwise
    # every program pays for that again, and the first one's output pipe stays open.
    { wineserver -p && wine cmd /c exit; } </dev/null >"$SESSION_DIR/start.log" 2>&1 && return
    session_fail "Wine does not start: $(tail -n 3 "$SESSION_DIR/start.log")"
}

session_close() {
    [[ ${SESSION_DIR:-} ]] || return 0
    session_stop_server "$SESSION_DIR/profile"
    if [[ ${SESSION_SCREEN_PID:-} ]]; then
        kill "$SESSION_SCREEN_PID" 2>/dev/null
        wait "$SESSION_SCREEN_PID" 2>/dev/null
    fi
    rm -rf "$SESSION_DIR"
    SESSION_DIR='' SESSION_SCREEN_PID=''
}

session_close_at_exit() {
    trap session_close EXIT
    trap 'exit 129' HUP
    trap 'exit 130' INT
    trap 'exit 143' TERM
}

# Starts a Windows program in a process session of its own, so that Ctrl+C in the terminal reaches
# only the script.
session_start_program() {
    setsid wine "$@" </dev/null >/dev/null 2>&1 &
}

# Replaces the program's settings; each argument is a line. SETTINGS is then the file's path. It is
# renamed into place, as a pass would use a half-written file as it is.
session_write_settings() {
    if [[ ! ${SETTINGS:-} ]]; then
        SETTINGS=$(wine cmd /c 'echo %APPDATA%' | tr -d '\r') &&
            SETTINGS=$(winepath -u "$SETTINGS")/Morvane/config.txt &&
            mkdir -p "$(dirname "$SETTINGS")" || return
    fi
    printf '%s\n' "$@" >"$SETTINGS.new" && mv "$SETTINGS.new" "$SETTINGS"
}

session_run() {
    local status=0 command
    session_close_at_exit
    session_open || exit
    # In the background, as bash handles signals only after a foreground command ends.
    "$@" <&0 &
    command=$!
    wait "$command" || status=$?
    exit "$status"
}

if [[ ${BASH_SOURCE[0]} == "$0" ]]; then
    if [[ ${1:-} == run && $# -ge 2 ]]; then
        shift
        session_run "$@"
    fi
    echo "usage: ${0##*/} run COMMAND [ARGUMENT...]" >&2
    exit 2
fi
