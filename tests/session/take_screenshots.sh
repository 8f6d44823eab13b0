#!/usr/bin/env bash
#
# Retakes the pictures in docs/screenshots: the current program among real windows in a private Wine
# session. The menu is operated with the pointer, as a user would.

set -euo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
# shellcheck source=tests/session/wine_session.sh
source "$ROOT/tests/session/wine_session.sh"

PROGRAM=$ROOT/build/release/Morvane.exe
REPORT=$ROOT/build/release/window_report.exe
AREAS=$ROOT/build/release/screen_areas.exe
PICTURES=$ROOT/docs/screenshots
FONT=/usr/share/fonts/truetype/liberation/LiberationSans-Regular.ttf
SMOOTH_FONT='WenQuanYi Micro Hei'
PATIENCE=15   # seconds to wait before giving up
CONTROL_CLASS=MorvaneHiddenWindow
ABOUT=1009    # its command number
MORVANE_PID=''
DEMO_AREA=780x550+500+250

# How far down the middle of an item is, in hundredths of the menu's height. The language's font
# affects only the total height.
ALWAYS_ON_TOP=6
ADD_REMOVE=21
MIN_SIZE=31

LANGUAGES=(
    "en English" "ja Japanese" "zh-cn Chinese, simplified" "zh-tw Chinese, traditional" "ko Korean"
    "es Spanish" "fr French" "de German" "pt Portuguese (Brazil)" "ru Russian"
)

fail() {
    echo "screenshots: FAILED: $*" >&2
    exit 1
}

report() {
    wine "$REPORT" "$@" || fail "window_report $*"
}

areas() {
    wine "$AREAS" "$@" || fail "screen_areas $*"
}

# Returns once the menu can be opened. $1 is the language.
start_morvane() {
    MORVANE_LANG=$1 session_start_program "$PROGRAM"
    MORVANE_PID=$!
    areas icon >/dev/null
}

end_morvane() {
    report close-hidden "$CONTROL_CLASS"
    wait "$MORVANE_PID" || fail "Morvane's exit code is $?"
}

# The program under the pointer notices it only when it moves.
point_at() {
    xdotool mousemove "$(($1 - 3))" "$2" mousemove "$1" "$2"
}

click_at() {
    point_at "$@"
    xdotool click 1
}

# The window $1 is activated first.
open_menu() {
    local x y width height
    report activate "$1"
    report wait "$PATIENCE" "active:$1"
    read -r x y width height < <(areas icon)
    click_at $((x + width / 2)) $((y + height / 2))
    areas menus 1 >/dev/null
}

# Opens the submenu at height $1 of the open menu.
open_submenu() {
    local x y width height
    read -r x y width height < <(areas menus 1)
    point_at $((x + width / 2)) $((y + height * $1 / 100))
    areas menus 2 >/dev/null
    areas no-tips
}

# Clicks on the empty desktop, outside every picture.
close_menu() {
    click_at 20 20
    areas menus 0
}

# The bounding box of the open menu and submenu, in ImageMagick's form.
menu_area() {
    areas menus 2 | awk '{
             if (NR == 1 || $1 < left) left = $1
             if (NR == 1 || $2 < top) top = $2
             if ($1 + $3 > right) right = $1 + $3
             if ($2 + $4 > bottom) bottom = $2 + $4
         }
         END { printf "%dx%d+%d+%d\n", right - left, bottom - top, left, top }'
}

# Captures the screen once it stops changing, and saves the area $2 as $1.
take() {
    local picture=$1 area=$2 end=$((SECONDS + PATIENCE)) now=$SESSION_DIR/now.rgb
    local before=$SESSION_DIR/before.rgb
    rm -f "$now" "$before"
    while :; do
        [[ ! -e $now ]] || mv "$now" "$before"
        import -window root -depth 8 "$now"
        ! cmp -s "$before" "$now" || break
        ((SECONDS < end)) || fail "the screen keeps changing for $picture"
    done
    convert -size "$SESSION_SCREEN" -depth 8 "$now" -crop "$area" +repage "$picture"
}

# Saves the picture $2 as the documentation's $1, as small as possible.
publish() {
    convert "$2" +dither -colors 256 -strip -define png:compression-level=9 \
        -define png:exclude-chunks=all "PNG8:$PICTURES/$1.png"
    echo "docs/screenshots/$1.png: $(stat -c %s "$PICTURES/$1.png") bytes"
}

take_and_publish() {
    take "$SESSION_DIR/picture.png" "$2"
    publish "$1" "$SESSION_DIR/picture.png"
}

open_two_windows() {
    printf '%s\r\n' "To do" "" "- answer the mail of Monday" "- book the room for the review" \
        "- water the plants" >"$WINEPREFIX/drive_c/Notes.txt"
    printf '%s\n' '{\rtf1\ansi{\fonttbl{\f0 '"$SMOOTH_FONT"';}}\f0' \
        '\fs32\b The year in numbers\b0\par' \
        '\fs22\par The first quarter went as expected. Orders came in evenly and the new\par' \
        'warehouse took over its share in March. The second one was better than\par' \
        'planned, for two reasons that the next pages explain.\par}' \
        >"$WINEPREFIX/drive_c/Report.rtf"
    session_start_program notepad 'C:\Notes.txt'
    session_start_program 'C:\Program Files\Windows NT\Accessories\wordpad.exe' 'C:\Report.rtf'
    report wait "$PATIENCE" ordinary:Notes ordinary:Report
    report place Report 520 270 620 440
    report place Notes 930 350 310 230
    # Wine 8.0 draws it in front from here on, until Morvane changes that.
    report activate Report
    report wait "$PATIENCE" active:Report
    areas taskbar
}

# Draws letters with soft edges, as Windows does: in small sizes, the session's other fonts want none.
smooth_fonts() {
    local face
    for face in "Tahoma" "MS Shell Dlg" "MS Shell Dlg 2" "Segoe UI"; do
        wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontSubstitutes' \
            /v "$face" /d "$SMOOTH_FONT" /f >/dev/null
    done
    wine reg add 'HKCU\Software\Microsoft\Notepad' /v lfFaceName /d "$SMOOTH_FONT" /f >/dev/null
    # Explorer, which draws the balloons, runs already.
    wineserver -k
    wineserver -w
    wineserver -p
    wine cmd /c exit
}

# Adds a picture of the screen to the animation, shown for $1 hundredths of a second. The pointer is
# drawn in, as pictures of the screen are without it.
add_frame() {
    local x y frame
    frames=$((frames + 1))
    frame=$SESSION_DIR/frame-$frames.png
    take "$frame" "$DEMO_AREA"
    read -r x y _ < <(xdotool getmouselocation --shell | awk -F = '{ print $2 }' | xargs)
    ((x -= 500, y -= 250)) || true
    mogrify -fill white -stroke black -draw "translate $x,$y polygon 0,0 0,16 4,13 7,19 9,18 6,12 11,12" \
        "$frame"
    animation+=(-delay "$1" "$frame")
}

# At 1000, 568, Notepad's status bar is grey and WordPad's page white (1).
wait_until_notes_are_drawn_in_front() {
    local end=$((SECONDS + PATIENCE))
    while [[ $(import -window root -crop 1x1+1000+568 miff:- |
        convert - -format '%[fx:mean]' info:) == 1 ]]; do
        ((SECONDS < end)) || fail "the pinned window is not drawn in front"
    done
}

# Pins a window, clicks another one, and switches pinning off. With a second pinned window, outside
# the pictures, Wine 8.0 draws the first one in front whatever is clicked, as each pass puts one
# above the other.
take_demo() {
    local x y width height frames=0 animation=()
    session_start_program winemine
    report wait "$PATIENCE" ordinary:WineMine
    report place WineMine 100 300 160 226
    report activate Report
    session_write_settings '@pinning=1' 'WineMine'
    start_morvane en
    point_at 600 300
    add_frame 100
    open_menu Report
    add_frame 80
    open_submenu "$ADD_REMOVE"
    add_frame 80
    read -r x y width height < <(areas menus 2)
    point_at $((x + width / 2)) $((y + height / 6))
    add_frame 80
    xdotool click 1
    areas menus 0
    report wait "$PATIENCE" topmost:Notes
    add_frame 120
    click_at 600 284
    report wait "$PATIENCE" active:Report topmost:Notes
    wait_until_notes_are_drawn_in_front
    add_frame 200
    open_menu Report
    read -r x y width height < <(areas menus 1)
    point_at $((x + width / 2)) $((y + height * ALWAYS_ON_TOP / 100))
    add_frame 80
    xdotool click 1
    areas menus 0
    report wait "$PATIENCE" ordinary:Notes
    click_at 600 284
    report wait "$PATIENCE" active:Report
    areas no-tips
    add_frame 200
    end_morvane
    convert "${animation[@]}" -loop 0 +dither -layers optimize "$PICTURES/demo.gif"
    echo "docs/screenshots/demo.gif: $(stat -c %s "$PICTURES/demo.gif") bytes"
}

# None of them covers the corner where the menu opens.
open_more_windows() {
    session_start_program regedit
    report wait "$PATIENCE" ordinary:Registry
    report place Report 100 80 620 440
    report place Notes 300 170 340 220
    report place WineMine 660 330 160 226
    report place Registry 180 300 420 260
}

take_main() {
    session_write_settings '@pinning=1' 'Notes'
    start_morvane en
    report wait "$PATIENCE" topmost:Notes ordinary:Report
    wait_until_notes_are_drawn_in_front
    open_menu Report
    open_submenu "$ADD_REMOVE"
    take_and_publish main "$DEMO_AREA"
    close_menu
}

# Saves the About window of the running program as $1.
take_about() {
    local x y width height
    report command-hidden "$CONTROL_CLASS" "$ABOUT"
    read -r x y width height < <(areas about)
    take "$1" "${width}x$height+$x+$y"
    # Its button is in the lower right corner.
    click_at $((x + width - 40)) $((y + height - 30))
    areas no-about
}

take_abouts() {
    local theme='HKCU\Software\Microsoft\Windows\CurrentVersion\Themes\Personalize'
    take_about "$SESSION_DIR/picture.png"
    publish about-light "$SESSION_DIR/picture.png"
    wine reg add "$theme" /v AppsUseLightTheme /t REG_DWORD /d 0 /f >/dev/null
    take_about "$SESSION_DIR/picture.png"
    publish about-dark "$SESSION_DIR/picture.png"
    wine reg delete "$theme" /v AppsUseLightTheme /f >/dev/null
}

take_languages() {
    local language code area cells=()
    for language in "${LANGUAGES[@]}"; do
        code=${language%% *}
        start_morvane "$code"
        open_menu Registry
        open_submenu "$MIN_SIZE"
        area=$(menu_area)
        take "$SESSION_DIR/menu.png" "$area"
        close_menu
        take_about "$SESSION_DIR/about.png"
        end_morvane
        convert -background white -font "$FONT" -pointsize 16 \
            "label:${language#* } ($code)" "$SESSION_DIR/menu.png" -size 1x8 xc:white \
            "$SESSION_DIR/about.png" -append +set label "$SESSION_DIR/$code.png"
        cells+=("$SESSION_DIR/$code.png")
    done
    # montage needs a font even with nothing to write.
    montage -font "$FONT" -background white -gravity northwest -tile 2x \
        -geometry '504x352+12+16>' "${cells[@]}" "$SESSION_DIR/picture.png"
    publish languages "$SESSION_DIR/picture.png"
}

take_menus() {
    local area
    open_menu Report
    open_submenu "$ADD_REMOVE"
    area=$(menu_area)
    take_and_publish menu-add-remove "$area"
    close_menu
    open_menu Report
    open_submenu "$MIN_SIZE"
    area=$(menu_area)
    take_and_publish menu-min-size "$area"
}

# Clicks the first row of the open submenu, which is to the left of the menu.
take_balloon() {
    local x y width height
    read -r x y width height < <(areas menus 2)
    click_at $((x + width / 2)) $((y + 12))
    areas menus 0
    point_at 20 20
    areas balloon >/dev/null
    areas no-tips
    take_and_publish balloon 300x120+980+680
}

(($# == 0)) || { echo "usage: ${0##*/}" >&2; exit 2; }
cmake --build "$ROOT/build/release" --target window_report screen_areas
mkdir -p "$PICTURES"
session_close_at_exit
session_open
smooth_fonts
open_two_windows
take_demo
take_main
take_abouts
end_morvane
open_more_windows
session_write_settings '@pinning=1' 'Notes' 'WineMine 160 226'
take_languages
start_morvane en
take_menus
take_balloon
end_morvane
# Wine draws the borders and menus: the page says which one did.
version=$(wine --version)
version=${version#wine-}
sed -i -E "s/(^\\(Taken|program,) under Wine [0-9]+\\.[0-9]+/\\1 under Wine ${version%% *}/" \
    "$ROOT/README.md" "$PICTURES/README.md"
