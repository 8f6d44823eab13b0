"""What the checks share: our own sources and which of them include which."""

import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]
# The folders that a path between quotes may start from, besides the including file's own.
INCLUDE_ROOTS = (ROOT / "src", ROOT / "tests", ROOT / "bench")
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*"([^"]+)"', re.MULTILINE)


def own_includes(path):
    """The files of ours that path includes directly; unknown names are left to the compiler."""
    found = []
    for name in INCLUDE.findall(path.read_text(encoding="utf-8")):
        for folder in (path.parent, *INCLUDE_ROOTS):
            candidate = (folder / name).resolve()
            if candidate.is_file():
                found.append(candidate)
                break
    return found


def include_closure(path):
    """path and everything of ours that it includes, directly or not, sorted."""
    closure = set()
    pending = [path]
    while pending:
        current = pending.pop()
        if current not in closure:
            closure.add(current)
            pending += own_includes(current)
    return sorted(closure)
