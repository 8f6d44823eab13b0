"""Checks that the folders of src/ form layers, as drawn in docs/architecture.md.

An include goes to the same layer or to one below. Every file must be in a layer, so that a new
folder gets its place.
"""

import pathlib
import re
import sys


# From the top.
LAYERS = ("app", "ui", "shell", "pin", "i18n", "settings", "base", "res")
# Outside the layers: replaces parts of the compiler's runtime; no other folder includes it.
OUTSIDE = {"runtime": ("base",)}
# The plain data that the parser fills. It includes nothing of ours itself.
EXCEPTIONS = {("settings", "pin/pin_list.h")}
ROOT = pathlib.Path(__file__).resolve().parents[2]
SOURCES = ROOT / "src"
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*"([^"]+)"', re.MULTILINE)


def own_includes(path):
    """Our own files that path includes directly; unknown names are left to the compiler."""
    names = INCLUDE.findall(path.read_text(encoding="utf-8"))
    candidates = [(folder / name).resolve() for name in names for folder in (SOURCES, path.parent)]
    return [candidate for candidate in candidates if candidate.is_file()]


def may_include(folder, included):
    target = included.parts[0]
    if folder in OUTSIDE:
        return target == folder or target in OUTSIDE[folder]
    return (target in LAYERS and LAYERS.index(target) >= LAYERS.index(folder)
            or (folder, str(included)) in EXCEPTIONS)


def main():
    findings = []
    files = sorted(path for path in SOURCES.rglob("*") if path.suffix in (".h", ".cpp"))
    for path in files:
        folder = path.relative_to(SOURCES).parts[0]
        if folder not in LAYERS and folder not in OUTSIDE:
            findings.append(f"{path.relative_to(ROOT)}: in no layer")
            continue
        findings += [f"{path.relative_to(ROOT)}: must not include {included.relative_to(SOURCES)}"
                     for included in own_includes(path)
                     if SOURCES in included.parents
                     and not may_include(folder, included.relative_to(SOURCES))]
    if own_includes(SOURCES / "pin" / "pin_list.h"):
        findings.append("src/pin/pin_list.h: is plain data and must include nothing of ours")
    print("\n".join(findings) or f"{len(files)} files in their layers")
    return 1 if findings or not files else 0


if __name__ == "__main__":
    sys.exit(main())
