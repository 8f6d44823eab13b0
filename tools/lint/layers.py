"""Checks that the folders of src/ stand on each other in one order.

An include goes to the same floor or to one below; docs/architecture.md draws them. Every file has
to be on a floor, so that a new folder gets its place.
"""

import sys

from sources import ROOT, own_includes

# From the top. What stands in one place may be used by all floors above it.
FLOORS = ("app", "ui", "shell", "pin", "i18n", "settings", "base", "res")
# Beside the house: replaces parts of the compiler's runtime and is included by nobody.
BESIDE = {"runtime": ("base",)}
# The plain data that the parser fills. It includes nothing of ours itself.
EXCEPTIONS = {("settings", "pin/pin_list.h")}
SOURCES = ROOT / "src"


def may_include(folder, included):
    target = included.parts[0]
    if folder in BESIDE:
        return target == folder or target in BESIDE[folder]
    return (target in FLOORS and FLOORS.index(target) >= FLOORS.index(folder)
            or (folder, str(included)) in EXCEPTIONS)


def main():
    findings = []
    files = sorted(path for path in SOURCES.rglob("*") if path.suffix in (".h", ".cpp"))
    for path in files:
        folder = path.relative_to(SOURCES).parts[0]
        if folder not in FLOORS and folder not in BESIDE:
            findings.append(f"{path.relative_to(ROOT)}: on no floor")
            continue
        findings += [f"{path.relative_to(ROOT)}: includes {included.relative_to(SOURCES)}, a floor up"
                     for included in own_includes(path)
                     if SOURCES in included.parents
                     and not may_include(folder, included.relative_to(SOURCES))]
    if own_includes(SOURCES / "pin" / "pin_list.h"):
        findings.append("src/pin/pin_list.h: is plain data and may include nothing of ours")
    print("\n".join(findings) or f"{len(files)} files on their floors")
    return 1 if findings or not files else 0


if __name__ == "__main__":
    sys.exit(main())
