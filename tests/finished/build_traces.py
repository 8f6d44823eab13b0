"""Finds paths and source names of the build machine in a program file."""

import re
from pathlib import Path

PROJECT_ROOT = Path(__file__).resolve().parents[2]

# Also the top folder of this project, as it may be built outside a home folder.
_FOLDERS = ["/home", "/root", "/tmp", f"/{PROJECT_ROOT.parts[1]}/"]
# At least two characters, so that random bytes of the code are not mistaken for a name.
_NAMES = [r"\.cpp", r"[A-Za-z0-9_]{2,}\.(?:c|cc|h|hpp|pdb)(?![A-Za-z0-9_])"]
_DRIVES = [r"(?<![A-Za-z0-9_])[A-Za-z]:[\\/][A-Za-z0-9_.]{2,}"]
_TRACE = "|".join([*map(re.escape, _FOLDERS), *_NAMES, *_DRIVES])
_BYTES = re.compile(_TRACE.encode("ascii"))


def traces_in(data):
    """Every trace with its offset, in ASCII and in UTF-16."""
    found = [f"{match[0].decode('ascii')} at {match.start():#x}" for match in _BYTES.finditer(data)]
    for odd in (0, 1):
        # One byte per unit; units beyond ASCII become a byte that no pattern contains.
        units = data[odd : odd + (len(data) - odd) // 2 * 2]
        narrow = bytes(low if high == 0 else 0xFF for low, high in zip(units[::2], units[1::2]))
        found += [f"{match[0].decode('ascii')} (UTF-16) at {odd + 2 * match.start():#x}"
                  for match in _BYTES.finditer(narrow)]
    return found
