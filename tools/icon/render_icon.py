#!/usr/bin/python3
"""Renders push_pin.svg into src/res/morvane.ico: one 16x16 image of 32 bits, stored as PNG.

Run it after changing the drawing and commit both files: the .ico is committed so that the build
needs no renderer. Needs rsvg-convert.
"""

import struct
import subprocess
import sys
from pathlib import Path

SIZE = 16
BITS = 32
PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"
NEEDED_CHUNKS = (b"IHDR", b"IDAT", b"IEND")

HERE = Path(__file__).resolve().parent
DRAWING = HERE / "push_pin.svg"
ICON = HERE.parents[1] / "src" / "res" / "morvane.ico"


def render(drawing):
    size = str(SIZE)
    command = ["rsvg-convert", "--width", size, "--height", size, "--format", "png", str(drawing)]
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout


def keep_needed_chunks(png):
    """Drops what an icon does not need, such as a background colour or a time stamp, which would
    make two renderings of the same drawing differ."""
    if not png.startswith(PNG_SIGNATURE):
        raise ValueError("the renderer did not return a PNG")
    kept = [PNG_SIGNATURE]
    position = len(PNG_SIGNATURE)
    while position < len(png):
        length, kind = struct.unpack_from(">I4s", png, position)
        end = position + 12 + length
        if kind in NEEDED_CHUNKS:
            kept.append(png[position:end])
        position = end
    return b"".join(kept)


def require_rgba(png):
    width, height, depth, colour_type = struct.unpack_from(">IIBB", png, 16)
    if (width, height, depth, colour_type) != (SIZE, SIZE, 8, 6):
        raise ValueError(
            f"expected {SIZE}x{SIZE} RGBA of 8 bits, got {width}x{height}, "
            f"depth {depth}, colour type {colour_type}"
        )


def icon_file(png):
    header = struct.pack("<HHH", 0, 1, 1)
    offset = len(header) + 16
    entry = struct.pack("<BBBBHHII", SIZE, SIZE, 0, 0, 1, BITS, len(png), offset)
    return header + entry + png


def main():
    png = keep_needed_chunks(render(DRAWING))
    require_rgba(png)
    icon = icon_file(png)
    ICON.write_bytes(icon)
    print(f"{ICON.name}: {len(icon)} bytes")
    return 0


if __name__ == "__main__":
    sys.exit(main())
