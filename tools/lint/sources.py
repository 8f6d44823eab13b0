"""Our own sources and which includes which, for the checks."""

import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parents[2]
# Where a quoted include may start from, besides the including file's folder.
INCLUDE_ROOTS = (ROOT / "src", ROOT / "tests", ROOT / "bench")
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*"([^"]+)"', re.MULTILINE)


def own_includes(path):
    """Our own files that path includes directly; unknown names are left to the compiler."""
    found = []
    for name in INCLUDE.findall(path.read_text(encoding="utf-8")):
        for folder in (path.parent, *INCLUDE_ROOTS):
            candidate = (folder / name).resolve()
            if candidate.is_file():
                found.append(candidate)
                break
    return found


def include_closure(path):
    """path and all our own files it includes, directly or indirectly, sorted."""
    closure = set()
    pending = [path]
    while pending:
        current = pending.pop()
        if current not in closure:
            closure.add(current)
            pending += own_includes(current)
    return sorted(closure)
