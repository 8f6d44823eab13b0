#!/usr/bin/env bash
#
# Renders the side picture of the installer's last page from the icon's drawing. Run it after
# changing the drawing and commit the result. Needs rsvg-convert and
# ImageMagick.

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

rsvg-convert --width 96 --height 96 ../../tools/icon/push_pin.svg |
    convert -size 164x314 canvas:'#eef2f6' png:- -gravity center -geometry +0-40 -composite \
        -colors 16 -type palette BMP3:side.bmp
