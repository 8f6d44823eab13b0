"""Prints the include cycles among our own files.

usage: include_cycles.py FOLDER...
"""

import pathlib
import sys

from sources import ROOT, own_includes


def cycles(files):
    """Yields every cycle that a depth-first walk closes, as an ordered list of files."""
    finished = set()
    for start in files:
        if start in finished:
            continue
        path = [start]
        pending = [iter(own_includes(start))]
        while path:
            for included in pending[-1]:
                if included in path:
                    yield path[path.index(included):] + [included]
                elif included not in finished:
                    path.append(included)
                    pending.append(iter(own_includes(included)))
                    break
            else:
                finished.add(path.pop())
                pending.pop()


def main(folders):
    files = sorted(
        path.resolve()
        for folder in folders
        for pattern in ("*.h", "*.cpp")
        for path in pathlib.Path(folder).rglob(pattern)
    )
    found = 0
    for cycle in cycles(files):
        found += 1
        print("include cycle: " + " -> ".join(str(path.relative_to(ROOT)) for path in cycle))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
