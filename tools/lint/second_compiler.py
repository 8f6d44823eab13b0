"""Runs a second compiler over our sources, just for its warnings.

Uses the options in a build folder's compile commands, except for those only the first compiler
understands: its optimisations and warning names.

usage: second_compiler.py CLANG BUILD_FOLDER
"""

import pathlib
import shlex
import subprocess
import sys

from per_source import check_all, run

OPTIONS = [
    "--target=x86_64-w64-mingw32", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Werror",
    "-Wcast-align", "-Wcast-qual", "-Wconversion", "-Wdouble-promotion", "-Wextra-semi",
    "-Wformat=2", "-Wimplicit-fallthrough", "-Wnewline-eof", "-Wnon-virtual-dtor",
    "-Wnull-dereference", "-Wold-style-cast", "-Woverloaded-virtual", "-Wshadow", "-Wshadow-field",
    "-Wsign-conversion", "-Wundef", "-Wunreachable-code", "-Wunused",
    "-Wzero-as-null-pointer-constant",
]
# Options to keep; for the second list the argument is the next word.
KEPT = ("-D", "-I", "-std=", "-fno-exceptions", "-fno-rtti")
KEPT_WITH_NEXT = ("-isystem",)


def kept_options(command):
    words = iter(shlex.split(command))
    for word in words:
        if word in KEPT_WITH_NEXT:
            yield word
            yield next(words)
        elif word.startswith(KEPT):
            yield word


def main(clang, build):
    build = pathlib.Path(build).resolve()
    version = subprocess.run([clang, "--version"], capture_output=True, check=True).stdout
    common = version + "\0".join(OPTIONS).encode()
    return check_all("clang", build, common, lambda source, command: run(
        [clang, *OPTIONS, *kept_options(command), str(source)]))


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
