"""Runs clang-tidy over every source of ours in a build folder's compile commands.

A source is checked again only when something changed that its result depends on: the file, what it
includes of ours, its compile command, the configuration or clang-tidy itself.

usage: tidy.py CLANG_TIDY BUILD_FOLDER
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import subprocess
import sys

from sources import ROOT, include_closure


def own_commands(build):
    """(source, compile command) of every file of ours that is compiled as C++."""
    commands = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    for entry in commands:
        source = pathlib.Path(entry["file"])
        if source.suffix == ".cpp" and ROOT in source.parents:
            yield source, entry["command"]


def configurations():
    """Every configuration that applies to a file of ours; a folder may have one of its own."""
    return [ROOT / ".clang-tidy",
            *(path for folder in ("src", "tests", "bench")
              for path in sorted((ROOT / folder).rglob(".clang-tidy")))]


def cache_key(source, command, common):
    digest = hashlib.sha256(common)
    # Without the folder that the checkout happens to lie in.
    digest.update(command.replace(str(ROOT), ".").encode())
    for path in include_closure(source):
        digest.update(f"\0{path.relative_to(ROOT)}\0".encode())
        digest.update(path.read_bytes())
    return digest.hexdigest()


def check(clang_tidy, build, source):
    """None when there is nothing to report, else what clang-tidy said."""
    result = subprocess.run(
        [clang_tidy, "--quiet", "--warnings-as-errors=*", f"-p={build}", str(source)],
        cwd=ROOT, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
        text=True, check=False)
    if result.returncode == 0:
        return None
    return result.stdout or result.stderr


def main(clang_tidy, build):
    build = pathlib.Path(build).resolve()
    # One empty file per clean result; a source that went away leaves a stale one, which is harmless.
    cache = ROOT / "build" / "tidy-cache"
    cache.mkdir(parents=True, exist_ok=True)
    version = subprocess.run([clang_tidy, "--version"], capture_output=True, check=True).stdout
    common = version + b"".join(path.read_bytes() for path in configurations())

    pending = []
    clean = 0
    for source, command in own_commands(build):
        mark = cache / cache_key(source, command, common)
        if mark.exists():
            clean += 1
        else:
            pending.append((source, mark))

    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        reports = pool.map(lambda item: check(clang_tidy, build, item[0]), pending)
        for (source, mark), report in zip(pending, reports):
            if report is None:
                mark.touch()
            else:
                failed += 1
                print(f"{source.relative_to(ROOT)}:\n{report}", flush=True)
    print(f"{len(pending)} checked, {clean} unchanged, {failed} with findings")
    return 1 if failed or not pending and not clean else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
