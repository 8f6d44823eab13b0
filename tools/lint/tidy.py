"""Runs clang-tidy on each of our sources in a build folder's compile commands.

usage: tidy.py CLANG_TIDY BUILD_FOLDER
"""

import pathlib
import subprocess
import sys

from per_source import check_all, run
from sources import ROOT


def configurations():
    """Every configuration that applies to our files; a folder may have its own."""
    return [ROOT / ".clang-tidy",
            *(path for folder in ("src", "tests", "bench")
              for path in sorted((ROOT / folder).rglob(".clang-tidy")))]


def main(clang_tidy, build):
    build = pathlib.Path(build).resolve()
    version = subprocess.run([clang_tidy, "--version"], capture_output=True, check=True).stdout
    common = version + b"".join(path.read_bytes() for path in configurations())
    arguments = [clang_tidy, "--quiet", "--warnings-as-errors=*", f"-p={build}"]
    return check_all("tidy", build, common, lambda source, _: run([*arguments, str(source)]))


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
