"""Checks that every fault in docs/faults.md names tests that exist and are not disabled."""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
TABLE = ROOT / "docs" / "faults.md"
TEST = re.compile(r"^TEST(?:_[FP])?\(\s*(\w+),\s*(\w+)\)", re.MULTILINE)
REFERENCE = re.compile(r"`(\w+\.[A-Z]\w+)`")


def main():
    tests = {f"{suite}.{name}" for path in (ROOT / "tests").rglob("*_test.cpp")
             for suite, name in TEST.findall(path.read_text(encoding="utf-8"))}
    rows = [row for row in TABLE.read_text(encoding="utf-8").splitlines()
            if row.startswith("| ") and not row.startswith("| Fault ")]
    findings = [f"{name}: no such test" for row in rows for name in REFERENCE.findall(row)
                if name not in tests]
    findings += [f"{name}: disabled" for row in rows for name in REFERENCE.findall(row)
                 if "DISABLED_" in name]
    findings += [f"no test: {row}" for row in rows if not REFERENCE.search(row)]
    print("\n".join(findings) or f"{len(rows)} faults, each with a test")
    return 1 if findings or not rows else 0


if __name__ == "__main__":
    sys.exit(main())
