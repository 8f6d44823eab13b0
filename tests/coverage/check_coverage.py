#!/usr/bin/python3
"""Reports the lines of the program that no test runs.

Each such line needs an excuse in excuses.txt: its file and text, and below, indented, the reason. An
excuse covers one line; "x2: " before the text makes it cover two lines with that text. Exits with 1
if a line has no excuse, an excuse does not match its lines, or the coverage is below the goal.
Needs gcovr.

usage: check_coverage.py BUILD_FOLDER
"""

import json
import re
import subprocess
import sys
from collections import Counter, namedtuple
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
EXCUSES = Path(__file__).with_name("excuses.txt")
GOAL = 95.0  # percent of the lines
Excuse = namedtuple("Excuse", "lines reason")

GCOV = "x86_64-w64-mingw32-gcov-posix"


def counted_lines(build):
    """{(file, line number): execution count}"""
    result = subprocess.run(
        ["gcovr", "--root", str(ROOT), "--filter", str(ROOT / "src") + "/", "--gcov-executable",
         GCOV, "--json", "-", str(build / "src")],
        cwd=ROOT, stdout=subprocess.PIPE, text=True, check=True)
    return {(file["file"], line["line_number"]): line["count"]
            for file in json.loads(result.stdout)["files"] for line in file["lines"]
            if not line.get("gcovr/noncode", False)}


def read_excuses(text):
    """{(file, text): Excuse}"""
    found = {}
    subject = None
    for line in text.splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        if line.startswith(" "):
            if subject is None:
                raise ValueError(f"reason without a line: {line.strip()}")
            lines, reason = found[subject]
            found[subject] = Excuse(lines, f"{reason} {line.strip()}".strip())
            continue
        match = re.fullmatch(r"(\S+): (?:x(\d+): )?(.+)", line.rstrip())
        if not match:
            raise ValueError(f"not of the form FILE: TEXT: {line}")
        subject = match[1], match[3].strip()
        if subject in found:
            raise ValueError(f"excused twice: {line}")
        found[subject] = Excuse(int(match[2] or 1), "")
    return found


def judge(missed, excuses):
    """The findings for the missed lines, given as [(file, number, text)]."""
    findings = [f"{file}:{number}: not run by any test and not excused: {text}"
                for file, number, text in missed if (file, text) not in excuses]
    counts = Counter((file, text) for file, _, text in missed)
    for (file, text), (lines, reason) in excuses.items():
        if counts[file, text] != lines:
            findings.append(f"{file}: {lines} lines excused, {counts[file, text]} not run: {text}")
        if not reason:
            findings.append(f"{file}: excuse without a reason: {text}")
    return findings


def main(build):
    counts = counted_lines(Path(build).resolve())
    texts = {}
    missed = []
    for (file, number), count in sorted(counts.items()):
        if count == 0:
            lines = texts.setdefault(file, (ROOT / file).read_text(encoding="utf-8").splitlines())
            missed.append((file, number, lines[number - 1].strip()))

    excuses = read_excuses(EXCUSES.read_text(encoding="utf-8"))
    findings = judge(missed, excuses)
    share = 100.0 * (len(counts) - len(missed)) / len(counts) if counts else 0.0
    if share < GOAL:
        findings.append(f"coverage is below the goal of {GOAL} %")

    for file, number, text in missed:
        print(f"not run: {file}:{number}: {text}")
        if (file, text) in excuses:
            print(f"         {excuses[file, text].reason}")
    print("\n".join(findings))
    print(f"{len(counts) - len(missed)} of {len(counts)} lines of the program run: {share:.1f} %")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
